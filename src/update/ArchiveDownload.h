#pragma once

#include "support/Error.h"
#include "support/HttpTransfer.h"
#include "support/ScopedFile.h"

#include <QUrl>

#include <functional>
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
/// bytes is of no use and fetched no further than one byte beyond it or so.
///
/// Begins and returns at once; destroying the transfer calls it off. `completion` runs once, on the network
/// thread, and must hand off without blocking.
std::unique_ptr<HttpTransfer> fetchArchive(const QUrl& url, qint64 expectedSize,
                                           std::function<void(const FetchedArchive&)> completion);

}  // namespace parlivo
