// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// The pages of the first run, in their order.
enum class Step { welcome, folder, quality, download, microphone, accessibility, ready };
inline constexpr int stepCount = 7;

}  // namespace parlivo
