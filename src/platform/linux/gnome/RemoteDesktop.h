// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/gnome/RemoteSession.h"
#include "support/LoopJobs.h"
#include "support/UniqueFd.h"

#include <QDBusConnection>
#include <QString>
#include <QTimer>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class QThread;

namespace parlivo::gnome {

/// Keys and clipboard of GNOME's compositor, for any thread: a thread of its own opens a session when the
/// first of them is used, and closes it as soon as the former clipboard is back, or three seconds after the
/// last use.
class RemoteDesktop {
  public:
    explicit RemoteDesktop(QDBusConnection bus);
    /// Brings what was begun to its end: half a second at most.
    ~RemoteDesktop();
    RemoteDesktop(const RemoteDesktop&) = delete;
    RemoteDesktop& operator=(const RemoteDesktop&) = delete;

    using KeyState = RemoteSession::KeyState;
    struct KeyMove {
        std::uint32_t key = 0;  ///< by the kernel's code
        KeyState state = KeyState::Up;
    };
    /// False if a key could not be sent.
    bool moveKeys(const std::vector<KeyMove>& moves);

    struct Clipboard {
        std::optional<QString> own;  ///< the text, if it is ours
        UniqueFd pipe;               ///< else from here comes another owner's, if there is one
    };
    Clipboard clipboard();
    /// False if the compositor refuses.
    bool setClipboard(const QString& text, Pasteboard::History history);
    /// Puts a text back, if the clipboard still holds what was set last, and closes the session as soon as
    /// GNOME has the text. nullopt only closes. Returns at once.
    void leave(const std::optional<QString>& text);
    /// How often programs have been given a text, GNOME's own copies included.
    int timesRead() const { return timesRead_; }

  private:
    // On the thread.
    RemoteSession* session();
    void putBack(const std::optional<QString>& text);
    void noteTaken();
    void close();

    void run(const LoopJobs::Job& job);

    const QDBusConnection bus_;
    std::atomic<int> timesRead_ = 0;
    std::unique_ptr<RemoteSession> session_;  // on the thread
    std::unique_ptr<QTimer> closing_;         // on the thread
    bool isLeaving_ = false;                  // on the thread
    LoopJobs jobs_;
    std::unique_ptr<QThread> thread_;
};

}  // namespace parlivo::gnome
