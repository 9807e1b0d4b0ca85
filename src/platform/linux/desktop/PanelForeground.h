// SPDX-License-Identifier: MIT
#pragma once

#include "platform/StatusItemHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>

#include <functional>

namespace parlivo {

/// What the desktop's own panel writes in, as far as the session bus tells: items on the bus, unlike those in
/// an X tray, hear nothing of the panel's colours. Main thread.
class PanelForeground : public QObject {
    Q_OBJECT
  public:
    /// `changed` is called, later, when `value` has changed.
    explicit PanelForeground(std::function<void()> changed);

    StatusItemPlace::Foreground value() const { return value_; }

  private Q_SLOTS:
    void xfceSettingChanged(const QString& channel, const QString& property);
    void portalSettingChanged(const QString& space, const QString& key);

  private:
    void askXfce();
    void askPortal();
    void ask(const QDBusMessage& question, const std::function<void(const QDBusMessage&)>& take);
    void setValue(StatusItemPlace::Foreground value);

    QDBusConnection bus_;
    std::function<void()> changed_;
    StatusItemPlace::Foreground value_ = StatusItemPlace::Foreground::Unknown;
};

}  // namespace parlivo
