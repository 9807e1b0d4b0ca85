// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QString>

#include <utility>

namespace parlivo {

/// A lock on a file that the kernel releases however its owner ends (flock(2)).
class InstanceLock {
  public:
    explicit InstanceLock(QString file) : file_(std::move(file)) {}

    /// False if another process holds it. A file that cannot be opened, or a symbolic link in its place,
    /// counts as taken by us: better two instances than none.
    bool take();

  private:
    QString file_;
    UniqueFd descriptor_;
};

}  // namespace parlivo
