// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Deletes the files that killed instances of this user left behind: recordings, downloads, updates. The
/// files of running instances stay. Any thread; blocks for as long as it takes to list three folders.
void removeStaleFiles();

}  // namespace parlivo
