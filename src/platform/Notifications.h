// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

namespace parlivo {

/// A short message that the desktop shows beside the user's work.
struct Notification {
    QString text;                    ///< plain; never anything that was dictated
    QString actionLabel;             ///< of the one button, or empty for none
    std::function<void()> onAction;  ///< called on the main thread when the user chooses it
};

/// The desktop's notifications. Where it has none, nothing happens. Main thread; every operation returns at
/// once.
class Notifications {
  public:
    virtual ~Notifications() = default;

    /// In the place of the former one: there is never more than one of ours.
    virtual void show(Notification notification) = 0;
    /// Takes the last one back, if it is still there.
    virtual void withdraw() = 0;
};

/// For a system whose users are told of errors in the menu alone.
class NoNotifications : public Notifications {
  public:
    void show(Notification) override {}
    void withdraw() override {}
};

}  // namespace parlivo
