// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"
#include "platform/linux/desktop/HotKeyEdges.h"
#include "platform/linux/desktop/KeyLayout.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace parlivo::kde {

/// Hot keys by KDE's own service for them (org.kde.KGlobalAccel on the session bus), which tells of both
/// edges. The user sees the hot key in the desktop's settings and may change it there; that holds until
/// another one is chosen here. At the end it is given up, but stays listed.
///
/// The service knows keys by what the layout prints on them.
class KdeHotKeyService : public QObject, public HotKeyService {
    Q_OBJECT

  public:
    /// Whether the service answers on the session bus. Any thread.
    static bool isOffered();

    /// A key that means nothing, or null functions. Pressed and released when the hot key is: the focused
    /// window sees a hot key's Alt go down and up with no key between, which opens the menu bar of many
    /// programs. It is not released earlier, because the service takes the release of any key for the end of
    /// the hold.
    struct NoOpKey {
        std::function<void()> press;
        std::function<void()> release;
    };

    /// With a null `layout` only keys that all layouts have in common can be registered.
    explicit KdeHotKeyService(std::unique_ptr<KeyLayout> layout = nullptr, NoOpKey noOpKey = {});
    ~KdeHotKeyService() override;
    KdeHotKeyService(const KdeHotKeyService&) = delete;
    KdeHotKeyService& operator=(const KdeHotKeyService&) = delete;

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    /// The status is an errno: EINVAL for a key that the service has no name for, EBUSY for a combination
    /// that another program holds, ENOTCONN if the service does not answer.
    /// What is registered with another number than 1 is not listed once it is given up.
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    Contention contention() const override { return Contention::Common; }
    std::optional<KeyCode> keyCodeOf(std::uint32_t nativeScanCode) const override;
    QString keyLabel(KeyCode key) override;

  private Q_SLOTS:
    void pressed(const QString& component, const QString& action, qlonglong time);
    void released(const QString& component, const QString& action, qlonglong time);

  private:
    class Registration;

    /// 0 or the errno.
    int take(const QStringList& action, int combination);
    void giveUp(const QStringList& action);
    void serviceRestarted();
    bool listen();
    void beginHold();
    void endHold();

    const std::unique_ptr<KeyLayout> layout_;
    const NoOpKey noOpKey_;
    QDBusConnection bus_;
    HotKeyEdges edges_;
    std::optional<int> combination_;  // of the hot key, while it is registered
    QString component_;               // its object's path, once it is known
};

}  // namespace parlivo::kde
