// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"
#include "platform/SessionHint.h"
#include "platform/linux/desktop/HotKeyEdges.h"
#include "platform/linux/gnome/CustomBinding.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

namespace parlivo::gnome {

/// The hot key where GNOME tells programs of none (before 48): an entry in the desktop's own list of key
/// combinations, which runs this program with `--toggle`. The user makes and removes it, by a button; until
/// then the hot key is refused as not set up. It stays when the program ends.
///
/// The identity that is registered first is the hot key; another one only tries whether a combination can be
/// had.
class BoundHotKeyService : public QObject, public HotKeyService {
    Q_OBJECT

  public:
    /// Whether the desktop has such a list. Any thread.
    static bool isOffered(const QDBusConnection& bus);

    explicit BoundHotKeyService(QDBusConnection bus);
    ~BoundHotKeyService() override;
    BoundHotKeyService(const BoundHotKeyService&) = delete;
    BoundHotKeyService& operator=(const BoundHotKeyService&) = delete;

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    /// The status is an errno: EINVAL for a key that no keyboard has, EBUSY for a combination of GNOME's or
    /// of another program's, EAGAIN as long as the entry is not made.
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    Edges edges() const override { return Edges::PressesOnly; }
    Contention contention() const override { return Contention::Common; }
    std::optional<KeyCode> keyCodeOf(std::uint32_t nativeScanCode) const override;

    /// What the user has to do, or can undo.
    std::vector<SessionHint> hints();

  private Q_SLOTS:
    void settingsChanged(const QString& path, const QStringList& keys, const QString& tag);

  private:
    void assign();
    void remove();
    void look();
    std::optional<HotKeyRefusal> adopt(const QString& accelerator);

    HotKeyEdges edges_;
    CustomBinding binding_;
    std::optional<HotKeyIdentity> identity_;
    std::optional<QString> wanted_;  // nullopt where the chosen combination cannot be had
    bool isSetUp_ = false;
    QTimer looking_;
};

}  // namespace parlivo::gnome
