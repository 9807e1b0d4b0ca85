// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"
#include "platform/SessionHint.h"
#include "platform/linux/desktop/HotKeyEdges.h"
#include "platform/linux/portal/ReleaseRule.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace parlivo::portal {

/// What the portal does not tell of the desktop behind it. Main thread.
struct PortalDesktop {
    /// A combination as the portal spells it ("CTRL+ALT+space"); nullopt if no keyboard has it.
    /// https://specifications.freedesktop.org/shortcuts-spec/latest/
    std::function<std::optional<QString>(KeyCode, HotKeyModifiers)> trigger;
    /// Whether the desktop has this combination itself.
    std::function<bool(KeyCode, HotKeyModifiers)> isHeld;
    /// Whether the user has allowed this program's key already, so that nothing is asked any more.
    std::function<bool()> isAllowed;
    ReleaseRule::Repeat repeat;
};

/// Hot keys by the desktop's portal (org.freedesktop.portal.GlobalShortcuts), which asks the user once, in a
/// dialog of the desktop's. That is begun by the user, by a button; until then the hot key is refused as not
/// set up. Which keys are in force is then the desktop's affair. A key that was lost with the portal is asked
/// for anew when there is another one, for about a minute if that one refuses at first.
///
/// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.GlobalShortcuts.html
class PortalHotKeyService : public QObject, public HotKeyService {
    Q_OBJECT

  public:
    /// Asks the portal, which may have to be started for that, and waits for nothing. `unavailable` is called
    /// later, once at most, if the portal has no hot keys, or none for this program (it wants an installed
    /// desktop file), or does not answer. Main thread.
    PortalHotKeyService(PortalDesktop desktop, std::function<void()> unavailable);
    ~PortalHotKeyService() override;
    PortalHotKeyService(const PortalHotKeyService&) = delete;
    PortalHotKeyService& operator=(const PortalHotKeyService&) = delete;

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    /// The status is an errno: EINVAL for a key that no keyboard has, EBUSY for a combination of the
    /// desktop's, EAGAIN as long as the user has not allowed it.
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    Contention contention() const override { return Contention::Common; }
    std::optional<KeyCode> keyCodeOf(std::uint32_t nativeScanCode) const override;

    /// What the user has to do, or should know.
    std::vector<SessionHint> hints();

  private Q_SLOTS:
    void created(uint code, const QVariantMap& results, const QDBusMessage& response);
    void bound(uint code, const QVariantMap& results, const QDBusMessage& response);
    void activated(const QDBusObjectPath& session, const QString& id, qulonglong time,
                   const QVariantMap& options);
    void deactivated(const QDBusObjectPath& session, const QString& id, qulonglong time,
                     const QVariantMap& options);
    void sessionClosed(const QVariantMap& details);

  private:
    using Answer = std::function<void(const QDBusMessage&)>;

    /// Says who this program is, and asks for the hot keys' version.
    void introduce();
    void call(const QDBusMessage& question, const Answer& answer);
    void becomeReady();
    /// Sends a request whose answer comes to the slot.
    void request(const QString& method, const QVariantList& arguments, QVariantMap options, const char* slot);
    /// Whether this answers the request that was sent last.
    bool isAnswer(const QDBusMessage& response) const;
    void ask();
    void openSession();
    void closeSession();
    void bind();
    void fail();
    void releaseHold();
    void portalEnded();
    void portalStarted();
    void regain();
    void regainLater();

    QDBusConnection bus_;
    const PortalDesktop desktop_;
    const std::function<void()> unavailable_;
    HotKeyEdges edges_;
    ReleaseRule rule_;
    QTimer silence_;
    QTimer regaining_;
    std::optional<HotKeyIdentity> identity_;
    QString wanted_;         // how the portal spells the chosen combination
    QString session_;        // the path of its object; empty without one
    QString keys_;           // what the desktop has bound, in its words
    bool isReady_ = false;   // knows this program, and has hot keys
    bool isThere_ = true;    // as the bus says; of interest once it is ready
    bool isAsking_ = false;  // for the key, or will when it is ready
    bool isBound_ = false;
    bool wasRefused_ = false;
    std::optional<int> regains_;  // how often a key that was lost with the portal was asked for since
    int requests_ = 0;
    QString request_;  // the path of the last one's object
};

}  // namespace parlivo::portal
