// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"
#include "support/UniqueFd.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <memory>

namespace parlivo::gnome {

/// One session of the interface with which GNOME's compositor lets itself be operated from afar: keys by
/// their position, and the clipboard. While a session runs the panel shows an orange sign.
///
/// Used by one thread, with an event loop and SIGPIPE blocked. Every request waits for the compositor, a few
/// milliseconds, three seconds at most. Destroying it ends the session.
///
/// org.gnome.Mutter.RemoteDesktop, as its introspection and Mutter's description of the interface state it.
class RemoteSession : public QObject {
    Q_OBJECT

  public:
    /// Whether a compositor with the interface answers on this bus. Any thread.
    static bool isOffered(const QDBusConnection& bus);
    /// Null if the compositor refuses.
    static std::unique_ptr<RemoteSession> open(const QDBusConnection& bus);

    ~RemoteSession() override;
    RemoteSession(const RemoteSession&) = delete;
    RemoteSession& operator=(const RemoteSession&) = delete;

    enum class KeyState { Up, Down };
    /// Moves a key, by the kernel's code. False if the compositor refuses.
    bool notifyKey(std::uint32_t key, KeyState state);

    /// Asks the owner of the clipboard for its plain text, which then comes out of the pipe; owns nothing if
    /// there is none, and while the clipboard is ours.
    UniqueFd receiveText();
    /// Puts a text on the clipboard, where it stays as this session's as long as that lasts. GNOME keeps a
    /// copy of its own for afterwards. False if the compositor refuses.
    bool offer(const QString& text, Pasteboard::History history);
    /// Whether the clipboard holds what was offered last.
    bool isOwner() const { return isOwner_; }
    /// Returns when the compositor has come to a question that is asked now.
    void waitForCompositor();
    const QString& offered() const { return text_; }

  Q_SIGNALS:
    /// A program has been given the whole text that was offered last.
    void textTaken();
    /// The compositor has ended the session.
    void closed();

  private Q_SLOTS:
    void transferAsked(const QString& type, uint serial);
    void ownerChanged(const QVariantMap& owner);
    void sessionClosed();

  private:
    RemoteSession(QDBusConnection bus, QString path);

    bool start();
    QDBusMessage ask(const char* method, const QVariantList& arguments = {});
    void connectSignal(const char* name, const char* slot);

    QDBusConnection bus_;
    const QString path_;
    QString text_;
    bool isOwner_ = false;
    bool isRunning_ = false;
    int offers_ = 0;
};

}  // namespace parlivo::gnome
