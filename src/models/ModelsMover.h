// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"
#include "support/SerialQueue.h"

#include <QString>

#include <functional>

namespace parlivo {

/// Moves the models to another folder on a queue of its own, because copying gigabytes to another disk takes
/// minutes. To be used on the main thread.
class ModelsMover {
  public:
    /// Moves the models of the folder in force into `to`, stores `to` as the folder in force and then calls
    /// `onAdopted`. What cannot be moved stays where it is. When the program ends first, nothing is stored
    /// and the models are back in their old folder.
    void move(const QString& to, std::function<void()> onAdopted);

  private:
    Lifetime lifetime_;
    /// The last member: its destructor waits for a move that still runs.
    SerialQueue queue_{QStringLiteral("parlivo.models")};
};

}  // namespace parlivo
