// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace parlivo {

/// The short system sounds.
class Sounds {
  public:
    virtual ~Sounds() = default;

    /// Plays the sound named "Tink", "Pop" or "Basso" and returns at once; silent when it cannot. Main
    /// thread.
    virtual void play(const QString& name) = 0;
};

}  // namespace parlivo
