#pragma once

namespace parlivo {

/// Deletes the recordings, as they were spoken and converted, that dead programs of this user's left among
/// the temporary files. Those that a living program claims stay, whichever session it belongs to. Any thread.
void removeLeftoverRecordings();

}  // namespace parlivo
