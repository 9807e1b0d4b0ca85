// SPDX-License-Identifier: MIT
#include "update/Updater.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Http.h"
#include "support/MainQueue.h"
#include "ui/views/Dialogs.h"
#include "update/SitePage.h"
#include "update/UpdateInstaller.h"
#include "update/Versions.h"

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds feedTimeout{15};
constexpr qint64 longestFeed = 1 << 20;  // bytes

}  // namespace

Updater::Updater(Restart restart, std::chrono::milliseconds period, std::optional<UpdateKey> key)
    : restart_(std::move(restart)), period_(period), key_(std::move(key)) {
    QObject::connect(&timer_, &QTimer::timeout, [this] { check(); });
}

Updater::~Updater() = default;

void Updater::start() {
    check();
    timer_.start(Clock::scaled(period_));
}

void Updater::check() {
    HttpRequest request;
    request.url = sitePage(u"updates.json"_s);
    request.headers = {{"Cache-Control", "no-cache"}};
    request.timeout = feedTimeout;
    request.maximumReplySize = longestFeed;
    const auto ask = [this, request, alive = lifetime_.token()](const StopToken& calledOff) {
        const HttpReply reply = Http::exchange(request, calledOff);
        const auto feed = reply.complete() ? FeedEntry::decode(reply.body) : std::nullopt;
        if (feed) MainQueue::async(alive, [this, feed = *feed] { take(feed); });
    };
    check_ = std::make_unique<Worker>(u"parlivo.feed"_s, ask);
}

void Updater::take(const FeedEntry& feed) {
    const QString current = Config::appVersion();
    if (isNewer(feed.version, current)) {
        Log::info(u"aggiornamento disponibile: %1 (attuale %2)"_s.arg(feed.version, current));
        available = feed;
    } else {
        available.reset();
    }
    if (onStateChange) onStateChange();
}

void Updater::promptAndInstall() {
    if (!available || offering_ || installing_) return;
    // A check may replace it while the offer is open.
    const FeedEntry entry = *available;
    offering_ = true;
    const int chosen = Dialogs::current().ask(
        {.message = tr("Parlivo %1 è disponibile").arg(entry.version),
         .informativeText = tr("Novità:\n%1\n\nL'app si riavvierà da sola al termine.").arg(entry.changelog),
         .buttons = {tr("Aggiorna ora"), tr("Più tardi")}});
    offering_ = false;
    if (chosen == 0) install(entry);
}

void Updater::install(const FeedEntry& entry) {
    const QUrl url(entry.url, QUrl::StrictMode);
    if (!url.isValid()) return;
    if (!isSafeAddress(url, Config::siteBase())) {
        failDownload(u"%1://"_s.arg(url.scheme()));
        return;
    }
    setInstalling(entry.version);
    Log::info(u"download aggiornamento "_s + entry.version);
    const auto fetch = [this, url, entry, alive = lifetime_.token()](const StopToken& calledOff) {
        const FetchedArchive archive = fetchArchive(url, entry.size, calledOff);
        MainQueue::async(alive, [this, entry, archive] { apply(entry, archive); });
    };
    download_ = std::make_unique<Worker>(u"parlivo.archive"_s, fetch);
}

void Updater::setInstalling(const std::optional<QString>& version) {
    installing_ = version;
    if (onInstallation) onInstallation();
}

void Updater::apply(const FeedEntry& entry, const FetchedArchive& archive) {
    if (archive.failure) {
        failDownload(archive.failure->localizedDescription());
        return;
    }
    queue_.async([this, entry, file = archive.file, alive = lifetime_.token()]() mutable {
        try {
            // The archive is gone before the outcome is told: the program may end at once.
            installUpdate(std::exchange(file, nullptr)->path(), entry, key_);
            Log::info(u"aggiornamento %1 installato, riavvio"_s.arg(entry.version));
            MainQueue::async(alive, [this] { relaunch(); });
        } catch (const Error& error) {
            const QString& reason = error.localizedDescription();
            Log::info(u"installazione update fallita: "_s + reason);
            MainQueue::async(alive, [this, reason] { fail(reason); });
        }
    });
}

void Updater::failDownload(const QString& reason) {
    Log::info(u"download update fallito: "_s + reason);
    fail(tr("Download non riuscito. Riprova più tardi."));
}

void Updater::fail(const QString& explanation) {
    setInstalling({});
    Dialogs::current().ask(
        {.message = tr("Aggiornamento non riuscito"), .informativeText = explanation, .buttons = {tr("OK")}});
}

void Updater::relaunch() {
    restart_.stopEngines();
    Platform::current().bundleTools().startAfterEnd(Platform::current().bundle().location());
    restart_.quit();
}

}  // namespace parlivo
