// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

namespace parlivo {

/// Announces changes of settings that something holds on to; all others are read afresh on each use. Main
/// thread.
class SettingsNotifier : public QObject {
    Q_OBJECT

  public:
    /// The one of the process.
    static SettingsNotifier& shared();

  Q_SIGNALS:
    /// After `hotkeyPreset` was stored with another value.
    void pvHotkeyChanged();

  private:
    SettingsNotifier() = default;
};

}  // namespace parlivo
