// SPDX-License-Identifier: MIT
#pragma once

#include "support/Error.h"
#include "support/ScopedFile.h"
#include "support/Stop.h"

#include <QUrl>

#include <memory>
#include <optional>

namespace parlivo {

/// The end of an archive's download: a temporary file with whatever the server sent, or the reason why there
/// is none.
struct FetchedArchive {
    std::shared_ptr<const ScopedFile> file;
    std::optional<Error> failure;
};

/// Fetches an archive into a temporary file that only the user can read. What is longer than `expectedSize`
/// bytes is of no use and fetched no further than one piece beyond it. Blocks, so not on the main thread.
FetchedArchive fetchArchive(const QUrl& url, qint64 expectedSize, const StopToken& calledOff);

}  // namespace parlivo
