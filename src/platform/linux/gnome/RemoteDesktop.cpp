// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/RemoteDesktop.h"

#include "support/Clock.h"

#include <QEventLoop>
#include <QThread>

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <utility>

namespace parlivo::gnome {

namespace {

using namespace std::chrono_literals;

/// Longer than a paste takes until its clipboard is put back.
constexpr auto idleTime = 3000ms;
/// How long GNOME may take to copy a text that is put back: it does so within milliseconds.
constexpr auto copyTimeout = 1000ms;
/// From the moment at which GNOME has read a text until its copy is in its place; it does not tell. On a
/// machine that is busy with everything else 50 ms were too short once, and the clipboard was empty.
constexpr auto copyTime = 250ms;
constexpr auto endTimeout = 500ms;

/// A program that asked for the clipboard's text and went away must not end this one.
void blockBrokenPipes() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

RemoteDesktop::RemoteDesktop(QDBusConnection bus) : bus_(std::move(bus)), thread_(new QThread) {
    thread_->setObjectName(QStringLiteral("parlivo.gnome"));
    jobs_.moveToThread(thread_.get());
    thread_->start();
    jobs_.run([this] {
        blockBrokenPipes();
        closing_ = std::make_unique<QTimer>();
        closing_->setSingleShot(true);
        QObject::connect(closing_.get(), &QTimer::timeout, closing_.get(), [this] { close(); });
    });
}

RemoteDesktop::~RemoteDesktop() {
    jobs_.run([this] {
        if (session_ && isLeaving_) {
            QEventLoop loop;
            QObject::connect(session_.get(), &QObject::destroyed, &loop, &QEventLoop::quit);
            QTimer::singleShot(endTimeout, &loop, &QEventLoop::quit);
            loop.exec();
        }
        close();
        closing_.reset();
    });
    thread_->quit();
    thread_->wait();
}

RemoteSession* RemoteDesktop::session() {
    closing_->start(Clock::scaled(idleTime));
    isLeaving_ = false;
    if (session_) return session_.get();
    session_ = RemoteSession::open(bus_);
    if (!session_) return nullptr;
    // The session must not be destroyed by what it calls.
    QObject::connect(session_.get(), &RemoteSession::closed, closing_.get(),
                     [this] { closing_->start(0ms); });
    QObject::connect(session_.get(), &RemoteSession::textTaken, closing_.get(), [this] { noteTaken(); });
    return session_.get();
}

void RemoteDesktop::noteTaken() {
    ++timesRead_;
    if (isLeaving_) closing_->start(Clock::scaled(copyTime));
}

void RemoteDesktop::close() {
    closing_->stop();
    // One that is too busy to have made its copy yet is given that time.
    if (session_ && std::exchange(isLeaving_, false)) session_->waitForCompositor();
    session_.reset();
}

bool RemoteDesktop::moveKeys(const std::vector<KeyMove>& moves) {
    bool sent = false;
    jobs_.run([&] {
        auto* const open = session();
        sent = open && std::ranges::all_of(
                           moves, [&](const KeyMove& move) { return open->notifyKey(move.key, move.state); });
    });
    return sent;
}

RemoteDesktop::Clipboard RemoteDesktop::clipboard() {
    Clipboard clipboard;
    jobs_.run([&] {
        auto* const open = session();
        if (!open) return;
        if (open->isOwner())
            clipboard.own = open->offered();
        else
            clipboard.pipe = open->receiveText();
    });
    return clipboard;
}

bool RemoteDesktop::setClipboard(const QString& text, Pasteboard::History history) {
    bool set = false;
    jobs_.run([&] {
        auto* const open = session();
        set = open && open->offer(text, history);
    });
    return set;
}

void RemoteDesktop::leave(const std::optional<QString>& text) {
    jobs_.post([this, text] { putBack(text); });
}

/// A history has the text from its first stay, unless it was one that no history should have.
void RemoteDesktop::putBack(const std::optional<QString>& text) {
    if (!session_) return;
    if (!text || !session_->isOwner() || !session_->offer(*text, Pasteboard::History::Omit)) return close();
    isLeaving_ = true;
    closing_->start(Clock::scaled(copyTimeout));
}

}  // namespace parlivo::gnome
