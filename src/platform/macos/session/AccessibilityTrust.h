// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Whether this program may control others (post key events to them), as the system's list of trusted
/// programs says. Any thread.
bool isAccessibilityTrusted();

/// The same; a program that is not trusted yet is put on the list, and the system asks the user about it.
bool isAccessibilityTrustedOrAsk();

}  // namespace parlivo
