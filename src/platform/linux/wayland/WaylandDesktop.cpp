// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/WaylandDesktop.h"

#include "platform/linux/base/InheritedEnvironment.h"
#include "platform/linux/desktop/OwnKeyHint.h"
#include "platform/linux/wayland/DataControlPasteboard.h"
#include "platform/linux/wayland/FakeInput.h"
#include "platform/linux/wayland/LayerPanels.h"
#include "platform/linux/wayland/VirtualKeyboard.h"
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

std::unique_ptr<wayland::WaylandKeyboard> keyboardOn(wayland::WaylandConnection* connection) {
    using namespace wayland;
    if (!connection) return std::make_unique<WaylandKeyboard>(nullptr, nullptr);
    std::unique_ptr<ChordKeys> keys;
    if (VirtualKeyboard::isOffered(*connection))
        keys = std::make_unique<VirtualKeyboard>(*connection);
    else if (FakeInput::isOffered(*connection))
        keys = std::make_unique<FakeInput>(*connection);
    return std::make_unique<WaylandKeyboard>(InputMethod::make(*connection), std::move(keys));
}

}  // namespace

WaylandDesktop::WaylandDesktop(OwnWays ways)
    : ways_(std::move(ways)),
      connection_(wayland::WaylandConnection::open()),
      keyboard_(keyboardOn(connection_.get())),
      pasteboard_(wayland::DataControlPasteboard::open()),
      hasDataControl_(pasteboard_ != nullptr),
      hasLayers_(connection_ && wayland::LayerPanels::isOffered(*connection_)) {
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

void WaylandDesktop::seekPaste() {
    std::call_once(pasteSought_, [this] {
        if (hasDataControl_ && keyboard_->canPressKeys()) {
            pasteName_ =
                QCoreApplication::translate("parlivo::WaylandDesktop", "incolla da tastiera virtuale");
            return;
        }
        PasteWay way = ways_.findPaste();
        if (!way.keys || !way.pasteboard) return;
        keyboard_->useKeys(std::move(way.keys));
        ownPasteboard_ = std::move(way.pasteboard);
        pasteName_ = way.name;
    });
}

KeyboardSynthesizer& WaylandDesktop::keyboard() {
    seekPaste();
    return *keyboard_;
}

Pasteboard& WaylandDesktop::pasteboard() {
    seekPaste();
    return ownPasteboard_ ? *ownPasteboard_ : *pasteboard_;
}

bool WaylandDesktop::canDeliverText() {
    seekPaste();
    return !pasteName_.isEmpty() || keyboard_->canCommitText();
}

std::optional<QString> WaylandDesktop::startProblem() {
    if (toolkitSpeaksWayland() || hasXServer()) return std::nullopt;
    return QCoreApplication::translate(
        "parlivo::WaylandDesktop",
        "le finestre non possono essere mostrate in questa sessione Wayland: manca il plugin di Qt per Wayland (pacchetto qt6-wayland)");
}

std::vector<SessionHint> WaylandDesktop::sessionHints() {
    auto hints = hotKey().hints ? hotKey().hints() : std::vector<SessionHint>();
    const auto saysSomethingOn = [&](SessionHint::Topic topic) {
        return std::ranges::find(hints, topic, &SessionHint::topic) != hints.end();
    };
    if (hotKeys().edges() == HotKeyService::Edges::None && !saysSomethingOn(SessionHint::Topic::HotKey))
        hints.push_back(ownKeyHint());
    if (!canDeliverText() && !saysSomethingOn(SessionHint::Topic::Text)) {
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
    seekPaste();
    if (!pasteName_.isEmpty()) text << pasteName_;
    if (text.isEmpty()) text << QCoreApplication::translate("parlivo::WaylandDesktop", "testo negli appunti");
    const QString key = !hotKey().name.isEmpty()
                            ? hotKey().name
                            : QCoreApplication::translate("parlivo::WaylandDesktop", "nessun tasto globale");
    const QString panel = hasLayers_
                              ? QCoreApplication::translate("parlivo::WaylandDesktop", "pannello")
                              : QCoreApplication::translate("parlivo::WaylandDesktop", "nessun pannello");
    return QCoreApplication::translate("parlivo::WaylandDesktop", "Wayland: %1, %2, %3")
        .arg(key, text.join(QStringLiteral(", ")), panel);
}

}  // namespace parlivo
