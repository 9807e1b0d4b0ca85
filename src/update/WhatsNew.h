// SPDX-License-Identifier: MIT
#pragma once

/// The notice of what changed, shown once after an update.
namespace parlivo::WhatsNew {

/// Shows the changelog that an update left behind, if another version ran here before, and waits until the
/// user has seen it; remembers the version. Main thread, once a start.
void showIfPending();

}  // namespace parlivo::WhatsNew
