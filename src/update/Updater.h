// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"
#include "support/SerialQueue.h"
#include "support/Worker.h"
#include "update/ArchiveDownload.h"
#include "update/FeedEntry.h"
#include "update/UpdateAuthenticity.h"

#include <QCoreApplication>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// Keeps the program current: asks the site for a newer version, offers it, and puts it in the place of the
/// running one. Main thread; the work itself runs on workers and on a queue of its own.
class Updater {
    Q_DECLARE_TR_FUNCTIONS(parlivo::Updater)

  public:
    using FeedEntry = parlivo::FeedEntry;

    /// What an installed update asks of the rest of the program.
    struct Restart {
        std::function<void()> stopEngines;
        std::function<void()> quit;
    };

    /// With a key, only updates that are signed with it are installed.
    explicit Updater(Restart restart, std::chrono::milliseconds period = std::chrono::hours(24),
                     std::optional<UpdateKey> key = builtInUpdateKey());
    ~Updater();
    Updater(const Updater&) = delete;
    Updater& operator=(const Updater&) = delete;

    /// The newer version that the last successful check found.
    std::optional<FeedEntry> available;
    /// After every check that could read the feed, whatever it found.
    std::function<void()> onStateChange;
    /// Whenever installing() has changed.
    std::function<void()> onInstallation;

    /// Checks now and then every `period`.
    void start();
    /// Returns at once. A feed that cannot be fetched or read changes nothing.
    void check();
    /// Offers what is available and waits for the answer; installs it if that is wanted. Does nothing while
    /// an earlier offer is open or being installed.
    void promptAndInstall();
    /// The version that is being downloaded and installed, if one is.
    const std::optional<QString>& installing() const { return installing_; }

  private:
    void take(const FeedEntry& feed);
    void install(const FeedEntry& entry);
    void setInstalling(const std::optional<QString>& version);
    void apply(const FeedEntry& entry, const FetchedArchive& archive);
    void failDownload(const QString& reason);
    void fail(const QString& explanation);
    void relaunch();

    const Restart restart_;
    const std::chrono::milliseconds period_;
    const std::optional<UpdateKey> key_;
    QTimer timer_;
    bool offering_ = false;
    std::optional<QString> installing_;
    std::unique_ptr<Worker> check_;
    std::unique_ptr<Worker> download_;
    Lifetime lifetime_;
    /// Last: its end waits for the running job.
    SerialQueue queue_{QStringLiteral("parlivo.update")};
};

}  // namespace parlivo
