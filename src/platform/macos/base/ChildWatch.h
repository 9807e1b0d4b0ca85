// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace parlivo {

/// What a child of this process does between fork and exec: leaves our terminal, and gets a watcher of its
/// own, a second small process that kills it when this program ends, however that comes about. (macOS has no
/// signal for the death of a parent.) The watcher ends with the child.
std::function<void()> macChildSetup();

}  // namespace parlivo
