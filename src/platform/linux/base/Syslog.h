// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemLog.h"

namespace parlivo {

/// syslog(3) under the identity "Parlivo".
class Syslog : public SystemLog {
  public:
    Syslog();
    ~Syslog() override;
    Syslog(const Syslog&) = delete;
    Syslog& operator=(const Syslog&) = delete;

    void write(const QString& message) override;
};

}  // namespace parlivo
