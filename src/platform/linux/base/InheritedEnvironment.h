// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QProcessEnvironment>

namespace parlivo {

/// The environment that this program was started with. Programs that it starts get this one: the variables
/// that it sets for itself (setOwnVariable) would harm them. Any thread.
const QProcessEnvironment& inheritedEnvironment();

/// Sets a variable for this program alone. Main thread, before any other thread runs.
void setOwnVariable(const char* name, const QByteArray& value);

}  // namespace parlivo
