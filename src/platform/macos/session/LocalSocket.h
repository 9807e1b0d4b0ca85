// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

namespace parlivo {

/// Sockets of the local kind (AF_UNIX) by their place in the file system, with plain POSIX calls. Descriptors
/// are closed on exec and do not block; an invalid one with errno on failure.
namespace LocalSocket {

/// Listens at `path`, in place of what lies there; only the user can connect.
UniqueFd listenAt(const QString& path);
UniqueFd acceptFrom(int listener);

// The two halves of `ask`, for conversations of several lines. They wait until the moment `end` and fail with
// ETIMEDOUT then.
UniqueFd connectTo(const QString& path);
bool sendAll(int descriptor, QByteArray bytes, std::chrono::steady_clock::time_point end);
std::optional<QByteArray> receiveLine(int descriptor, std::chrono::steady_clock::time_point end);

/// Sends one line to who listens at `path` and returns the line that comes back, without its end. nullopt
/// with errno: ENOENT or ECONNREFUSED if nobody listens, ETIMEDOUT if no answer comes within `timeout` ms.
std::optional<QByteArray> ask(const QString& path, const QByteArray& line, int timeout);

}  // namespace LocalSocket

}  // namespace parlivo
