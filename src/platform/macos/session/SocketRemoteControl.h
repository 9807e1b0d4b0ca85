// SPDX-License-Identifier: MIT
#pragma once

#include "platform/RemoteControl.h"
#include "support/UniqueFd.h"

#include <memory>

namespace parlivo {

/// A socket in the user's folder, on which the running program takes one line a connection and answers it
/// with one line:
///   Press, Release, Toggle, ShowSettings, ShowFeedback, Quit   performed, then "done"
///   State, StatusText, Version                                 the answer itself
///   Watch                                                      the state now and at each change, line by
///   line
/// Anything else is answered with "unknown". A lock beside it, which the kernel lets go of however its holder
/// ends, keeps the program to one instance.
class SocketRemoteControl : public RemoteControl {
  public:
    /// `folder` is created, and only the user can enter what is in it: the socket and the lock.
    explicit SocketRemoteControl(const QString& folder);
    ~SocketRemoteControl() override;
    SocketRemoteControl(const SocketRemoteControl&) = delete;
    SocketRemoteControl& operator=(const SocketRemoteControl&) = delete;

    Instance registerInstance() override;
    void serve(RemoteTarget target) override;
    void announceState(const QString& state) override;
    Delivery send(RemoteCommand command) override;
    QString whyUnavailable() const override;

    /// How long a running instance may take to answer.
    static constexpr int replyTimeout = 5000;  // ms

  private:
    class Server;

    const QString folder_;
    UniqueFd lock_;
    std::unique_ptr<Server> server_;
};

}  // namespace parlivo
