// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace parlivo {

/// The system's own log, for what concerns the machine rather than the user's diagnosis. Any thread; never
/// fails.
class SystemLog {
  public:
    virtual ~SystemLog() = default;
    virtual void write(const QString& message) = 0;
};

}  // namespace parlivo
