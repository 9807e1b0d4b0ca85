// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdint>

namespace parlivo {

/// What the user's keyboard layout gives on each key without modifiers, the first one where he has several.
/// Keys by the kernel's codes (linux/input-event-codes.h). Any thread.
class KeyLayout {
  public:
    virtual ~KeyLayout() = default;

    /// The keysym's name, such as "space"; empty if the key gives nothing.
    virtual QString symbolName(std::uint32_t kernelCode) = 0;
    /// The character that the key enters; 0 if it enters none.
    virtual char32_t character(std::uint32_t kernelCode) = 0;
    /// As HotKeyService::keyLabel.
    virtual QString label(std::uint32_t kernelCode) = 0;
};

}  // namespace parlivo
