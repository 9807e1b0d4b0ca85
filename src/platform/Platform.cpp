// SPDX-License-Identifier: MIT
#include "platform/Platform.h"

#include <cassert>
#include <utility>

namespace parlivo {

namespace {

std::unique_ptr<Platform>& slot() {
    static std::unique_ptr<Platform> platform;
    return platform;
}

}  // namespace

Platform& Platform::current() {
    assert(slot());
    return *slot();
}

void Platform::install(std::unique_ptr<Platform> platform) {
    slot() = std::move(platform);
}

}  // namespace parlivo
