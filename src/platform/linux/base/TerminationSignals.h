// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QSocketNotifier>

#include <functional>

namespace parlivo {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread, so that a session that ends or a user who
/// presses Ctrl-C gets an orderly end. One instance a process. Main thread.
class TerminationSignals {
  public:
    explicit TerminationSignals(std::function<void()> requested);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

  private:
    UniqueFd readEnd_;
    UniqueFd writeEnd_;
    QSocketNotifier notifier_;
};

}  // namespace parlivo
