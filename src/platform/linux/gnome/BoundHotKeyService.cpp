// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/BoundHotKeyService.h"

#include "platform/linux/desktop/KeyPositions.h"
#include "platform/linux/gnome/Accelerator.h"
#include "platform/linux/gnome/DesktopSettings.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <chrono>
#include <utility>

namespace parlivo::gnome {

namespace {

using namespace std::chrono_literals;

/// The settings tell of each key that changes.
constexpr auto settling = 200ms;

constexpr HotKeyRefusal notSetUp{EAGAIN, HotKeyRefusal::Reason::NotSetUp};

/// What the key runs: the program's plain name where that leads here.
QString toggleCommand() {
    const QString own = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
    const QString onPath = QStandardPaths::findExecutable(QStringLiteral("parlivo"));
    if (!onPath.isEmpty() && QFileInfo(onPath).canonicalFilePath() == own)
        return QStringLiteral("parlivo --toggle");
    QString quoted = own;
    quoted.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QStringLiteral("'%1' --toggle").arg(quoted);
}

/// The key stays with the desktop, whatever becomes of this.
class Registration : public HotKeyRegistration {};

}  // namespace

bool BoundHotKeyService::isOffered(const QDBusConnection& bus) {
    const auto* const names = bus.interface();
    return names &&
           names->isServiceRegistered(QStringLiteral("org.gnome.SettingsDaemon.MediaKeys")).value() &&
           DesktopSettings::isAvailable();
}

BoundHotKeyService::BoundHotKeyService(QDBusConnection bus) : binding_(toggleCommand()) {
    looking_.setSingleShot(true);
    looking_.setInterval(settling);
    connect(&looking_, &QTimer::timeout, this, [this] { look(); });
    // What stores GNOME's settings tells of each change.
    bus.connect(QString(), QStringLiteral("/ca/desrt/dconf/Writer/user"),
                QStringLiteral("ca.desrt.dconf.Writer"), QStringLiteral("Notify"), this,
                SLOT(settingsChanged(QString, QStringList, QString)));
}

BoundHotKeyService::~BoundHotKeyService() = default;

std::unique_ptr<HotKeyHandler> BoundHotKeyService::installHandler(Edge pressed, Edge released,
                                                                  Change changed) {
    return edges_.install(std::move(pressed), std::move(released), std::move(changed));
}

HotKeyService::Result BoundHotKeyService::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                         HotKeyIdentity identity) {
    const auto accelerator = acceleratorOf(key, modifiers);
    if (!accelerator) return HotKeyRefusal{EINVAL, HotKeyRefusal::Reason::Unusable};
    const bool isFirst = !identity_.has_value();
    if (isFirst) identity_ = identity;
    const bool isTrial = identity != *identity_;
    isSetUp_ = binding_.exists();
    // At the start the entry stays as it is: the user may have changed it in the desktop's settings.
    if (isFirst && isSetUp_ && !binding_.accelerator().isEmpty()) {
        wanted_ = binding_.accelerator();
        binding_.mendCommand();
        return std::make_unique<Registration>();
    }
    if (binding_.isHeld(key, modifiers)) {
        if (!isTrial) {
            wanted_.reset();
            // The key that was given up must not act any more.
            if (isSetUp_) binding_.assign({});
        }
        return HotKeyRefusal{EBUSY};
    }
    if (!isTrial) {
        if (const auto refusal = adopt(*accelerator)) return *refusal;
    }
    return std::make_unique<Registration>();
}

std::optional<HotKeyRefusal> BoundHotKeyService::adopt(const QString& accelerator) {
    wanted_ = accelerator;
    if (!isSetUp_) return notSetUp;
    return binding_.assign(accelerator) ? std::nullopt : std::optional(HotKeyRefusal{EIO});
}

std::optional<KeyCode> BoundHotKeyService::keyCodeOf(std::uint32_t nativeScanCode) const {
    if (nativeScanCode < KeyPositions::displayOffset) return std::nullopt;
    return KeyPositions::keyCodeOf(nativeScanCode - KeyPositions::displayOffset);
}

std::vector<SessionHint> BoundHotKeyService::hints() {
    using Topic = SessionHint::Topic;
    if (isSetUp_)
        return {{.topic = Topic::HotKey,
                 .text = QCoreApplication::translate(
                     "parlivo::BoundHotKeyService",
                     "La scorciatoia sta fra quelle personalizzate di GNOME, con il nome \"Parlivo\"."),
                 .lines = {},
                 .actionLabel = QCoreApplication::translate("parlivo::BoundHotKeyService",
                                                            "Togli la scorciatoia da GNOME"),
                 .action = [this] { remove(); }}};
    if (!wanted_) return {};
    return {
        {.topic = Topic::HotKey,
         .text = QCoreApplication::translate(
             "parlivo::BoundHotKeyService",
             "GNOME conosce i tasti globali solo come scorciatoie personalizzate: la tua va aggiunta una volta."),
         .lines = {},
         .actionLabel =
             QCoreApplication::translate("parlivo::BoundHotKeyService", "Aggiungi la scorciatoia a GNOME"),
         .action = [this] { assign(); }}};
}

void BoundHotKeyService::assign() {
    if (!wanted_ || !binding_.assign(*wanted_)) return;
    isSetUp_ = true;
    edges_.tell(std::nullopt);
}

void BoundHotKeyService::remove() {
    if (!wanted_ && !binding_.accelerator().isEmpty()) wanted_ = binding_.accelerator();
    binding_.remove();
    isSetUp_ = false;
    edges_.tell(notSetUp);
}

void BoundHotKeyService::settingsChanged(const QString& path, const QStringList&, const QString&) {
    if (path.startsWith(QLatin1String("/org/gnome/"))) looking_.start();
}

/// The user may have made or removed the entry in the desktop's own settings.
void BoundHotKeyService::look() {
    binding_.forget();
    if (!identity_ || binding_.exists() == isSetUp_) return;
    isSetUp_ = !isSetUp_;
    if (isSetUp_)
        edges_.tell(std::nullopt);
    else
        edges_.tell(notSetUp);
}

}  // namespace parlivo::gnome
