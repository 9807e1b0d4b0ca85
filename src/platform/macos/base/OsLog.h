// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemLog.h"

namespace parlivo {

/// The system's unified log. Messages are public in it: none of them holds what the user dictates.
class OsLog : public SystemLog {
  public:
    void write(const QString& message) override;
};

}  // namespace parlivo
