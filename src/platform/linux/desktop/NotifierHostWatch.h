// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <functional>

namespace parlivo {

/// Knows whether a panel on the session bus shows StatusNotifierItems. Main thread.
/// https://www.freedesktop.org/wiki/Specifications/StatusNotifierItem/
class NotifierHostWatch : public QObject {
    Q_OBJECT
  public:
    /// `changed` is called, later, whenever `hostPresent` may have changed; also when a panel was replaced by
    /// another, with false in between.
    explicit NotifierHostWatch(std::function<void()> changed);

    /// Whether items are shown now; false until the bus has answered.
    bool hostPresent() const { return hostPresent_; }

  private Q_SLOTS:
    void askForHost();

  private:
    void ownerChanged(const QString& newOwner);
    void setHostPresent(bool present);

    QDBusConnection bus_;
    QDBusServiceWatcher watcher_;
    std::function<void()> changed_;
    bool hostPresent_ = false;
};

}  // namespace parlivo
