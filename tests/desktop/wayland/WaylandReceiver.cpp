// SPDX-License-Identifier: MIT
#include "desktop/wayland/WaylandReceiver.h"

#include "desktop/wayland/Hands.h"
#include "desktop/wayland/Sway.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "support/Uuid.h"

#include <QFile>

#include <optional>
#include <ostream>

namespace parlivo::desktop {

namespace {

using namespace std::chrono_literals;

constexpr auto tapInterval = 300ms;
/// A browser on a busy machine takes long to show its first page.
constexpr auto startLimit = 90s;

/// A terminal that puts down exactly the bytes that come.
QStringList footWith(const QString& settings, const QString& title, const QString& file) {
    return {QStringLiteral("foot"),
            QStringLiteral("--title"),
            title,
            QStringLiteral("--override=locked-title=yes"),
            QStringLiteral("sh"),
            QStringLiteral("-c"),
            QStringLiteral("stty raw %1 && exec cat >\"$0\"").arg(settings),
            file};
}

QStringList commandOf(WaylandReceiver::Kind kind, const QString& title, const QString& file) {
    const QString folder = QStringLiteral(PARLIVO_RECEIVERS "/");
    switch (kind) {
        case WaylandReceiver::Kind::Foot:
            // Its cursor stands still, and foot answers an input method only when that moves: it stands for
            // all that do not answer.
            return footWith(QStringLiteral("-echo"), title, file);
        case WaylandReceiver::Kind::EchoingFoot:
            return footWith(QStringLiteral("echo"), title, file);
        case WaylandReceiver::Kind::Gtk3:
            return {folder + QStringLiteral("receiver_gtk3"), title, file};
        case WaylandReceiver::Kind::Gtk4:
            return {folder + QStringLiteral("receiver_gtk4"), title, file};
        case WaylandReceiver::Kind::Qt:
            return {folder + QStringLiteral("receiver_qt"), title, file};
        case WaylandReceiver::Kind::Chromium:
            return {folder + QStringLiteral("receiver_chromium"), title, file,
                    QStringLiteral("--ozone-platform=wayland")};
        case WaylandReceiver::Kind::ChromiumText:
            return {folder + QStringLiteral("receiver_chromium"),
                    title,
                    file,
                    QStringLiteral("--ozone-platform=wayland"),
                    QStringLiteral("--enable-wayland-ime"),
                    QStringLiteral("--wayland-text-input-version=3")};
    }
    return {};
}

/// The toolkits as a Wayland session has them.
QStringList environment() {
    return {QStringLiteral("--unset=DISPLAY"), QStringLiteral("--unset=QT_IM_MODULE"),
            QStringLiteral("GDK_BACKEND=wayland"), QStringLiteral("GTK_IM_MODULE=wayland"),
            QStringLiteral("QT_QPA_PLATFORM=wayland")};
}

[[noreturn]] void fail(const QString& what) {
    throw Error(QStringLiteral("desktop test"), 6, what);
}

}  // namespace

WaylandReceiver::WaylandReceiver(Kind kind, std::function<void()> tapShift)
    : title_(QStringLiteral("receiver-") + freshUuid()), file_(folder_.filePath(QStringLiteral("text"))) {
    process_.start(QStringLiteral("env"), environment() + commandOf(kind, title_, file_));
    // Only sway tells which window has the focus; elsewhere the toolkits make the file when they have it.
    const auto focused = [this] {
        return qEnvironmentVariableIsEmpty("SWAYSOCK") || sway::focusedTitle() == title_;
    };
    const bool wantsKeys = kind == Kind::Chromium || kind == Kind::ChromiumText;
    std::optional<Hands> hands;
    if (wantsKeys && !tapShift) {
        hands.emplace();
        tapShift = [&hands] { hands->tap(KEY_LEFTSHIFT); };
    }
    // A browser that is just starting must not find its queue full of keys.
    auto nextTap = Clock::now();
    const auto ready = [&] {
        const bool hasFocus = focused();
        if (hasFocus && wantsKeys && Clock::now() >= nextTap) {
            tapShift();
            nextTap = Clock::now() + tapInterval;
        }
        return hasFocus && QFile::exists(file_);
    };
    if (!waitFor(ready, startLimit))
        fail(QStringLiteral("no focus: ") + QString::fromStdString(nameOf(kind)));
}

QString WaylandReceiver::text() const {
    QFile file(file_);
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll()).replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

bool WaylandReceiver::waitForText(const QString& expected) const {
    return waitFor([&] { return text() == expected; });
}

void WaylandReceiver::focus() const {
    sway::command(QStringLiteral("[title=\"^%1$\"] focus").arg(title_));
    if (!waitFor([this] { return sway::focusedTitle() == title_; })) fail(QStringLiteral("no focus"));
}

bool WaylandReceiver::isShown() const {
    return sway::titles().contains(title_);
}

std::string nameOf(WaylandReceiver::Kind kind) {
    switch (kind) {
        case WaylandReceiver::Kind::Foot:
            return "Foot";
        case WaylandReceiver::Kind::EchoingFoot:
            return "EchoingFoot";
        case WaylandReceiver::Kind::Gtk3:
            return "Gtk3";
        case WaylandReceiver::Kind::Gtk4:
            return "Gtk4";
        case WaylandReceiver::Kind::Qt:
            return "Qt";
        case WaylandReceiver::Kind::Chromium:
            return "Chromium";
        case WaylandReceiver::Kind::ChromiumText:
            return "ChromiumText";
    }
    return "Unknown";
}

void PrintTo(WaylandReceiver::Kind kind, std::ostream* stream) {
    *stream << nameOf(kind);
}

}  // namespace parlivo::desktop
