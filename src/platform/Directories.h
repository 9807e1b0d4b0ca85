// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace parlivo {

/// Where this system keeps a user's files. Absolute paths, not necessarily existing. Any thread.
class Directories {
  public:
    virtual ~Directories() = default;

    /// The parent of the folder "Parlivo" with models and prompt.
    virtual QString applicationSupport() const = 0;
    /// The folder of the log file.
    virtual QString logs() const = 0;
    virtual QString home() const = 0;
    virtual QString temporary() const = 0;
};

}  // namespace parlivo
