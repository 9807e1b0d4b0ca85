#pragma once

#include "support/Lifeline.h"

#include <QString>

#include <functional>

/// Process-local announcements without payload, between rooms that do not know each other. Main thread.
namespace parlivo::NotificationCenter {

/// Calls `observer` on every post of `name` while its owner lives.
void observe(const QString& name, const Lifeline::Watch& owner, std::function<void()> observer);

/// Calls the observers of `name`, in the order in which they came, before it returns.
void post(const QString& name);

}  // namespace parlivo::NotificationCenter
