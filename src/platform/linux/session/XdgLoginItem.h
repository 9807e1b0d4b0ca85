// SPDX-License-Identifier: MIT
#pragma once

#include "platform/LoginItem.h"

#include <QString>

namespace parlivo {

/// Launch at login by an entry in the user's autostart folder.
/// https://specifications.freedesktop.org/autostart-spec/latest/
class XdgLoginItem : public LoginItem {
  public:
    /// `program` is the absolute path of what the entry starts.
    explicit XdgLoginItem(QString program);

    /// Whether the entry is there, not hidden, and starts this copy of the program.
    bool isEnabled() override;
    void setEnabled(bool enabled) override;

  private:
    void write() const;

    const QString program_;
};

}  // namespace parlivo
