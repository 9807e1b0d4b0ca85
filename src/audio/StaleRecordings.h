// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Deletes the recordings, as they were spoken and converted, that dead programs of this user's left among
/// the temporary files. Those that a living program has locked stay, whichever session it belongs to. Any
/// thread.
void removeStaleRecordings();

}  // namespace parlivo
