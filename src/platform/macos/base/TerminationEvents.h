// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>

namespace parlivo {

/// Calls when the program is asked to end: by the system at log-out or by its Quit command (which the toolkit
/// turns from `applicationShouldTerminate:` into an event), or by SIGTERM, SIGINT or SIGHUP. One instance a
/// process, after the application object. Main thread.
class TerminationEvents : public QObject {
  public:
    explicit TerminationEvents(std::function<void()> requested);
    ~TerminationEvents() override;
    TerminationEvents(const TerminationEvents&) = delete;
    TerminationEvents& operator=(const TerminationEvents&) = delete;

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void drain();

    const std::function<void()> requested_;
    UniqueFd readEnd_;
    UniqueFd writeEnd_;
    QSocketNotifier notifier_{QSocketNotifier::Read};
};

}  // namespace parlivo
