// SPDX-License-Identifier: MIT
#pragma once

#include "support/ChildProcess.h"
#include "support/Clock.h"
#include "support/Http.h"

#include <QJsonObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

namespace parlivo {

/// An engine: a server program on the loopback address that this program starts, asks for signs of life and
/// ends.
///
/// One thread (the pipeline) starts the server and waits for it; any other may end it meanwhile. One lock
/// guards the handle. All times are stated ones, and the program's end cuts every wait short.
class LocalServer {
  public:
    /// Which answer to the probe is a sign of life.
    enum class Accepts {
        AnyStatus,
        OnlyStatus200,  ///< a server that answers otherwise is still loading
    };
    struct Traits {
        QUrl probe;
        Accepts accepts = Accepts::AnyStatus;
        /// Between two looks while waiting for the server to come alive.
        std::chrono::milliseconds pollInterval{300};
    };

    explicit LocalServer(Traits traits) : traits_(std::move(traits)) {}

    /// Whether something answers on the server's address within 1.5 s, started by us or not. Waits first for
    /// a server that we ended to be gone: until then it may still answer, and take a request with it. A
    /// server of ours that runs, has answered within the last 200 ms and got no request since is not asked
    /// again.
    bool isAlive();
    /// Looks again and again until the server is alive, `timeout` has passed, or the server that we started
    /// has ended and nobody else answers in its place. One that has ended and may have used a graphics
    /// processor is first started again without.
    bool waitUntilAlive(std::chrono::milliseconds timeout);
    /// Whether the server that we started last is to load `model`, runs, and has not been alive yet. One that
    /// takes longer than any disk needs (5 min) does not count.
    bool isLoading(const QString& model) const;

    /// Ends the server that we started earlier, waits until it has really gone (two servers may share a port
    /// without a word, and either would answer) and starts `program` in the root folder; it loads `model`, an
    /// absolute path. Throws Error with the reason when it cannot be started or lacks a file.
    ///
    /// An engine that brings a file for graphics processors depends on drivers, which may be broken. If it
    /// ended by itself before its first reply or during a request, or took too long to load, it gets none
    /// from its next start on and the log says so. If that does not help, the drivers were not the reason,
    /// and it gets them again.
    void start(ChildProcess::Program program, const QString& model);

    /// Sends a request and reads the reply, one JSON object; nullopt if it is anything else. A server of ours
    /// that gives no reply in time is ended, so that its next use starts a fresh one.
    ///
    /// If it may have used a graphics processor and ends by itself instead of answering, it is started again
    /// without and sent the request once more. Both together take no longer than the request may take.
    std::optional<QJsonObject> ask(HttpRequest request);

    /// Whether a server started by us, running or not, has not been given up since.
    bool isStarted() const;
    /// The model that the started server loads.
    std::optional<QString> loadedModel() const;

    /// Asks the server to end and forgets it. Returns at once; the next start waits for its end. Any thread.
    void terminate();

  private:
    /// What a start leaves to the engine.
    enum class Graphics {
        None,      ///< it brings no file for graphics processors
        Allowed,   ///< it may use one
        Withheld,  ///< it is not told of the file
    };

    bool answers() const;
    bool wasJustSeen() const;
    void noteAlive();
    std::shared_ptr<ChildProcess> noteRequest();
    void noteReply();
    bool waitForFormer();
    std::shared_ptr<ChildProcess> process() const;
    void forgetStarted();
    void judgeGraphics();
    Graphics graphicsFor(ChildProcess::Program& program) const;
    void launch(ChildProcess::Program program, const QString& model, int terminations);
    bool startWithoutGraphics(const std::shared_ptr<ChildProcess>& ended);
    bool mayUseGraphics(const std::shared_ptr<ChildProcess>& process) const;
    std::optional<HttpReply> askWithoutGraphics(HttpRequest request, Clock::TimePoint sent,
                                                const std::shared_ptr<ChildProcess>& asked);

    struct Started {
        std::shared_ptr<ChildProcess> process;
        ChildProcess::Program program;
        Graphics graphics = Graphics::None;
        QString model;
        Clock::Deadline loadLimit;
        bool wasAlive = false;
        bool hasReplied = false;                 ///< to its last request
        std::optional<Clock::TimePoint> seen{};  ///< alive, and not asked for anything since
    };

    const Traits traits_;
    mutable std::mutex mutex_;
    std::optional<Started> started_;         // under mutex_
    int terminations_ = 0;                   // under mutex_
    std::shared_ptr<ChildProcess> former_;   // under mutex_: asked to end, perhaps still there
    std::optional<QString> brokenGraphics_;  // under mutex_: the program that failed with graphics
};

}  // namespace parlivo
