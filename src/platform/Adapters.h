// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

#include <memory>

namespace parlivo {

/// The platform of the system that the program was built for, its desktop recognised at run time. Defined by
/// that system's folder of adapters; for main and the tests' own mains.
std::unique_ptr<Platform> makePlatform();

}  // namespace parlivo
