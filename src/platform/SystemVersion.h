// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace parlivo {

/// The operating system, in the words it has for itself.
class SystemVersion {
  public:
    virtual ~SystemVersion() = default;

    /// For people to read, of the form "Version 14.5 (Build 23F79)". Main thread.
    virtual QString description() = 0;
};

}  // namespace parlivo
