#pragma once

namespace parlivo {

/// Deletes what killed programs of this user's left on the disk: recordings, downloads, updates.
/// What living ones still need stays. Any thread; takes no longer than it takes to look.
void removeLeftovers();

}  // namespace parlivo
