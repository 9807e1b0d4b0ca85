// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace parlivo {

/// What a child of this process does between fork and exec: leaves the terminal and asks the kernel to be
/// killed when the thread that started it ends (prctl(2), PR_SET_PDEATHSIG), so that it dies with the program
/// however that ends.
std::function<void()> linuxChildSetup();

}  // namespace parlivo
