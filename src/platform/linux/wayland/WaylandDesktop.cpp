// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/WaylandDesktop.h"

#include "platform/linux/base/InheritedEnvironment.h"
#include "platform/linux/desktop/OwnKeyHint.h"
#include "platform/linux/wayland/ConnectedKeys.h"
#include "platform/linux/wayland/DataControlPasteboard.h"
#include "platform/linux/wayland/LayerPanels.h"
#include "platform/linux/x11/QtPasteboard.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>

#include <algorithm>
#include <utility>

namespace parlivo {

namespace {

bool toolkitSpeaksWayland() {
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !plugins.entryList({QStringLiteral("libqwayland*.so")}, QDir::Files).isEmpty();
}

/// Most compositors bring an X server along, on which the toolkit can show its windows, too.
bool hasXServer() {
    return !qEnvironmentVariableIsEmpty("DISPLAY");
}

/// A compositor without data control takes a new clipboard from the focused window only, but it passes one on
/// that an X11 program sets, focused or not.
std::unique_ptr<Pasteboard> toolkitsPasteboard() {
    if (hasXServer() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        setOwnVariable("QT_QPA_PLATFORM", "xcb");
    return std::make_unique<QtPasteboard>();
}

/// What a connection offers to enter text with, which keeps the connection.
wayland::WaylandKeyboard::Means meansOn(const std::shared_ptr<wayland::WaylandConnection>& connection) {
    struct All {
        std::shared_ptr<wayland::WaylandConnection> connection;
        std::unique_ptr<wayland::InputMethod> inputMethod;
        std::unique_ptr<wayland::ChordKeys> keys;
    };
    if (!connection) return {};
    const auto all = std::make_shared<All>(
        All{connection, wayland::InputMethod::make(*connection), wayland::ConnectedKeys::on(*connection)});
    return {.inputMethod = {all, all->inputMethod.get()}, .keys = {all, all->keys.get()}};
}

}  // namespace

WaylandDesktop::WaylandDesktop(OwnWays ways)
    : ways_(std::move(ways)),
      connection_(wayland::WaylandConnection::open()),
      keyboard_(std::make_unique<wayland::WaylandKeyboard>(nullptr, nullptr)),
      pasteboard_(wayland::DataControlPasteboard::open()),
      hasDataControl_(pasteboard_ != nullptr),
      hasLayers_(connection_ && wayland::LayerPanels::isOffered(*connection_)) {
    keyboard_->use(meansOn(connection_));
    if (!pasteboard_) pasteboard_ = toolkitsPasteboard();
    if (hasLayers_)
        panels_ = std::make_unique<wayland::LayerPanels>();
    else
        panels_ = std::make_unique<NullFloatingPanels>();
}

WaylandDesktop::~WaylandDesktop() = default;

const HotKeyWay& WaylandDesktop::hotKey() {
    std::call_once(hotKeySought_, [this] {
        hotKey_ = ways_.findHotKey();
        if (!hotKey_.service)
            hotKey_.service = std::make_unique<NullHotKeyService>(HotKeyService::Edges::None);
    });
    return hotKey_;
}

QString WaylandDesktop::pasteName() {
    const std::lock_guard lock(pasteMutex_);
    followCompositor();
    if (pasteName_.isEmpty()) seekPaste();
    return pasteName_;
}

/// One that was started anew, which the toolkit may survive, too, or not need.
void WaylandDesktop::followCompositor() {
    if (!hasDataControl_ || !connection_ || !connection_->isBroken()) return;
    std::shared_ptr<wayland::WaylandConnection> fresh = wayland::WaylandConnection::open();
    if (!fresh) return;
    connection_ = std::move(fresh);
    keyboard_->use(meansOn(connection_));
}

void WaylandDesktop::seekPaste() {
    // The user may give leave to press keys while the program runs.
    if (hasDataControl_ && !keyboard_->canPressKeys())
        keyboard_->use(
            {.inputMethod = keyboard_->means().inputMethod, .keys = wayland::ConnectedKeys::open()});
    if (hasDataControl_ && keyboard_->canPressKeys()) {
        pasteName_ = QCoreApplication::translate("parlivo::WaylandDesktop", "incolla da tastiera virtuale");
        return;
    }
    if (std::exchange(ownPasteSought_, true)) return;
    PasteWay way = ways_.findPaste();
    if (!way.keys || !way.pasteboard) return;
    keyboard_->use({.inputMethod = keyboard_->means().inputMethod, .keys = std::move(way.keys)});
    ownPasteboard_ = std::move(way.pasteboard);
    pasteName_ = way.name;
}

KeyboardSynthesizer& WaylandDesktop::keyboard() {
    pasteName();
    return *keyboard_;
}

Pasteboard& WaylandDesktop::pasteboard() {
    pasteName();
    return ownPasteboard_ ? *ownPasteboard_ : *pasteboard_;
}

bool WaylandDesktop::canDeliverText() {
    return !pasteName().isEmpty() || keyboard_->canCommitText();
}

std::optional<QString> WaylandDesktop::startProblem() {
    if (toolkitSpeaksWayland() || hasXServer()) return std::nullopt;
    return QCoreApplication::translate(
        "parlivo::WaylandDesktop",
        "le finestre non possono essere mostrate in questa sessione Wayland: manca il plugin di Qt per Wayland (pacchetto qt6-wayland)");
}

std::vector<SessionHint> WaylandDesktop::sessionHints() {
    auto hints = hotKey().hints ? hotKey().hints() : std::vector<SessionHint>();
    const bool canDeliver = canDeliverText();
    if (canDeliver)
        std::erase_if(hints, [](const SessionHint& hint) { return hint.topic == SessionHint::Topic::Text; });
    const auto saysSomethingOn = [&](SessionHint::Topic topic) {
        return std::ranges::find(hints, topic, &SessionHint::topic) != hints.end();
    };
    if (hotKeys().edges() == HotKeyService::Edges::None && !saysSomethingOn(SessionHint::Topic::HotKey))
        hints.push_back(ownKeyHint());
    if (!canDeliver && !saysSomethingOn(SessionHint::Topic::Text)) {
        hints.push_back(
            {.topic = SessionHint::Topic::Text,
             .text = QCoreApplication::translate(
                 "parlivo::WaylandDesktop",
                 "Questa sessione non lascia che i programmi scrivano: il testo dettato va negli appunti, da dove lo incolli tu."),
             .lines = {},
             .actionLabel = {},
             .action = {}});
    }
    return hints;
}

QString WaylandDesktop::summary() {
    QStringList text;
    if (keyboard_->canCommitText())
        text << QCoreApplication::translate("parlivo::WaylandDesktop", "testo dal metodo di inserimento");
    if (const QString paste = pasteName(); !paste.isEmpty()) text << paste;
    if (text.isEmpty()) text << QCoreApplication::translate("parlivo::WaylandDesktop", "testo negli appunti");
    const QString name = hotKey().name ? hotKey().name() : QString();
    const QString key = !name.isEmpty()
                            ? name
                            : QCoreApplication::translate("parlivo::WaylandDesktop", "nessun tasto globale");
    const QString panel = hasLayers_
                              ? QCoreApplication::translate("parlivo::WaylandDesktop", "pannello")
                              : QCoreApplication::translate("parlivo::WaylandDesktop", "nessun pannello");
    return QCoreApplication::translate("parlivo::WaylandDesktop", "Wayland: %1, %2, %3")
        .arg(key, text.join(QStringLiteral(", ")), panel);
}

}  // namespace parlivo
