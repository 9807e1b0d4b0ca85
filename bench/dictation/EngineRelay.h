// SPDX-License-Identifier: MIT
#pragma once

#include "dictation/Testbed.h"
#include "support/StubServer.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <mutex>
#include <vector>

namespace parlivo::bench {

/// A real engine behind a relay, which stands at the port where the program looks for the engine and notes
/// how long the engine takes. The relay's own share, one more way over the loopback address, counts as the
/// engine's.
class EngineRelay {
  public:
    /// One request to the engine.
    struct Exchange {
        SteadyClock::time_point arrived;   ///< the request's last byte
        SteadyClock::time_point answered;  ///< the whole reply is there
    };
    struct Setup {
        QString program;
        QStringList arguments;  ///< without address and port
        quint16 port;           ///< the program's; the engine has the tenth after it
        QByteArray probe;       ///< path that says that it is there
        QByteArray path;        ///< of what is measured
    };

    /// Starts the engine and waits until it answers. Throws std::runtime_error if it does not.
    explicit EngineRelay(const Setup& setup);
    ~EngineRelay();
    EngineRelay(const EngineRelay&) = delete;
    EngineRelay& operator=(const EngineRelay&) = delete;

    /// The requests since `begin`, oldest first.
    std::vector<Exchange> since(SteadyClock::time_point begin) const;

  private:
    StubReply pass(const StubServer::Request& request);

    QProcess engine_;
    QString url_;
    mutable std::mutex mutex_;
    std::vector<Exchange> exchanges_;  // under mutex_
    StubServer relay_;                 // the last: its threads use the others
};

}  // namespace parlivo::bench
