// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Whether the system starts the program when the user logs in. Main thread.
class LoginItem {
  public:
    virtual ~LoginItem() = default;

    /// Whether the system would start this very program.
    virtual bool isEnabled() = 0;
    /// Throws Error with the system's own text.
    virtual void setEnabled(bool enabled) = 0;
};

}  // namespace parlivo
