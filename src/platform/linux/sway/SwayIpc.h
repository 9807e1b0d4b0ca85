// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace parlivo::sway {

/// The kinds of messages that are used here (sway-ipc(7)).
namespace MessageType {
inline constexpr std::uint32_t runCommand = 0;
inline constexpr std::uint32_t subscribe = 2;
inline constexpr std::uint32_t getConfiguration = 9;
inline constexpr std::uint32_t workspaceEvent = 0x80000000;
inline constexpr std::uint32_t bindingEvent = 0x80000005;
}  // namespace MessageType

struct Message {
    std::uint32_t type = 0;
    QByteArray payload;  ///< JSON
};

/// A conversation with sway over its socket. One thread.
class SwayIpc {
  public:
    /// nullopt if nothing listens there.
    static std::optional<SwayIpc> connect(const QString& socketPath);

    /// Sends a request and waits for its reply, 2 s at most; nullopt if none comes. Events that come before
    /// it are kept for `takeEvents`.
    std::optional<QByteArray> request(std::uint32_t type, const QByteArray& payload);
    /// Runs one command. False if sway refuses it or does not answer.
    bool run(const QByteArray& command);

    /// The events that have come so far, without waiting.
    std::vector<Message> takeEvents();
    /// Whether sway has ended the conversation, as far as is known after `takeEvents`.
    bool isBroken() const { return broken_; }
    /// Readable when there is something to take.
    int descriptor() const { return socket_.get(); }

  private:
    explicit SwayIpc(UniqueFd socket) : socket_(std::move(socket)) {}
    bool send(std::uint32_t type, const QByteArray& payload);
    void readAvailable();
    std::optional<Message> takeMessage();

    UniqueFd socket_;
    QByteArray received_;
    std::vector<Message> events_;
    bool broken_ = false;
};

}  // namespace parlivo::sway
