// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"
#include "support/Worker.h"

#include <QString>

#include <functional>
#include <memory>

namespace parlivo {

/// What a user tells the makers.
struct Feedback {
    int rating = 0;  ///< stars, 0 if none was chosen
    QString text;
    QString email;  ///< may be empty
};

/// Sends it to the product's site, with the versions of the program and of the system, and returns at once.
/// `completion` runs once on the main thread, unless the owner is gone by then. Letting go of what it returns
/// calls the request off, without a word.
std::unique_ptr<Worker> sendFeedback(const Feedback& feedback, const Lifetime::Token& owner,
                                     std::function<void(bool success)> completion);

}  // namespace parlivo
