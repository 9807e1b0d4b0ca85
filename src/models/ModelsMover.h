#pragma once

#include "support/Lifetime.h"
#include "support/SerialQueue.h"

#include <QString>

#include <functional>

namespace parlivo {

/// Moves the models from one folder to another in the background, where gigabytes on their way to another
/// disk hold nobody up. Main thread.
class ModelsMover {
  public:
    /// Moves the models of the folder in force into `to`, stores `to` as the folder in force and then calls
    /// `onAdopted`. What cannot be moved stays where it is. When the program ends first, nothing is stored
    /// and the models are back in their old folder.
    void move(const QString& to, std::function<void()> onAdopted);

  private:
    Lifetime lifetime_;
    /// Last: a move that still runs is waited for before anything else goes.
    SerialQueue queue_{QStringLiteral("parlivo.models")};
};

}  // namespace parlivo
