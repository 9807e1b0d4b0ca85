// SPDX-License-Identifier: MIT
#include "support/Receiver.h"

#include "support/Error.h"
#include "support/Keyboard.h"
#include "support/Uuid.h"
#include "support/XServer.h"

#include <QFile>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ostream>
#include <string_view>
#include <vector>

namespace parlivo::desktop {

namespace {

using x11::owned;

constexpr qint64 nudgeInterval = 50;  // ms

/// The few properties that this needs, read with one round trip each.
class Properties {
  public:
    explicit Properties(xcb_connection_t* connection) : connection_(connection) {}

    xcb_atom_t atom(std::string_view name) const { return x11::internAtom(connection_, name); }

    std::vector<xcb_window_t> windows(std::string_view property) const {
        const auto reply = get(root(), property);
        if (!reply || reply->format != 32) return {};
        const auto* const first = static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
        return {first, first + reply->value_len};
    }

    QString text(xcb_window_t window, std::string_view property) const {
        const auto reply = get(window, property);
        if (!reply || reply->format != 8) return {};
        return QString::fromUtf8(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                 static_cast<qsizetype>(reply->value_len));
    }

    xcb_window_t root() const { return rootOf(connection_); }

  private:
    x11::Reply<xcb_get_property_reply_t> get(xcb_window_t window, std::string_view property) const {
        const auto cookie =
            xcb_get_property(connection_, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1024);
        return owned(xcb_get_property_reply(connection_, cookie, nullptr));
    }

    xcb_connection_t* connection_;
};

/// Asks the window manager as a pager does, since it may refuse an application that wants the focus itself.
void activate(xcb_connection_t* connection, xcb_window_t window) {
    const Properties properties(connection);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = properties.atom("_NET_ACTIVE_WINDOW");
    constexpr std::uint32_t pager = 2;
    message.data.data32[0] = pager;
    xcb_send_event(connection, 0, properties.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection);
}

/// Whether `window` is `ancestor` or lies in it.
bool isWithin(xcb_connection_t* connection, xcb_window_t window, xcb_window_t ancestor) {
    while (window > XCB_INPUT_FOCUS_POINTER_ROOT && window != ancestor) {
        const auto tree =
            owned(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
        window = tree ? tree->parent : xcb_window_t{XCB_NONE};
    }
    return window == ancestor;
}

bool hasTitle(const Properties& properties, xcb_window_t window, const QString& title) {
    return properties.text(window, "_NET_WM_NAME") == title || properties.text(window, "WM_NAME") == title;
}

bool isActive(xcb_connection_t* connection, xcb_window_t window) {
    const auto active = Properties(connection).windows("_NET_ACTIVE_WINDOW");
    const auto focus = owned(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    // A window manager may tell before it is so, with the focus parked on a window of its own.
    // Some put a second number behind the window.
    return !active.empty() && active.front() == window && focus && isWithin(connection, focus->focus, window);
}

/// The window that the window manager lists under this title, or XCB_NONE.
xcb_window_t windowTitled(xcb_connection_t* connection, const QString& title) {
    const Properties properties(connection);
    const auto all = properties.windows("_NET_CLIENT_LIST");
    const auto found =
        std::ranges::find_if(all, [&](xcb_window_t window) { return hasTitle(properties, window, title); });
    return found == all.end() ? xcb_window_t{XCB_NONE} : *found;
}

QStringList commandOf(Receiver::Kind kind, const QString& title, const QString& file) {
    const QString folder = QStringLiteral(PARLIVO_RECEIVERS "/");
    switch (kind) {
        case Receiver::Kind::Xterm:
            return {QStringLiteral("xterm"), QStringLiteral("-T"), title, QStringLiteral("-u8"),
                    QStringLiteral("-fa"), QStringLiteral("DejaVu Sans Mono"), QStringLiteral("-e"),
                    QStringLiteral("sh"), QStringLiteral("-c"),
                    // Raw: the file holds exactly the bytes that the keys sent.
                    QStringLiteral("stty raw -echo && exec cat >\"$0\""), file};
        case Receiver::Kind::Gtk3:
            return {folder + QStringLiteral("receiver_gtk3"), title, file};
        case Receiver::Kind::Gtk4:
            return {folder + QStringLiteral("receiver_gtk4"), title, file};
        case Receiver::Kind::Qt:
            return {folder + QStringLiteral("receiver_qt"), title, file};
        case Receiver::Kind::Chromium:
            return {folder + QStringLiteral("receiver_chromium"), title, file,
                    QStringLiteral("--ozone-platform=x11")};
    }
    return {};
}

[[noreturn]] void fail(const QString& what) {
    throw Error(QStringLiteral("desktop test"), 2, what);
}

}  // namespace

void ProcessGroup::start(const QString& program, const QStringList& arguments) {
    process_.setStandardErrorFile(QProcess::nullDevice());
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.setChildProcessModifier([] { ::setpgid(0, 0); });
    process_.start(program, arguments);
    if (!process_.waitForStarted()) fail(program + QStringLiteral(" does not start"));
}

ProcessGroup::~ProcessGroup() {
    signal(SIGKILL);
    process_.waitForFinished();
}

void ProcessGroup::signal(int number) const {
    if (process_.processId() > 0) ::kill(-static_cast<pid_t>(process_.processId()), number);
}

Receiver::Receiver(Kind kind)
    : title_(QStringLiteral("receiver-") + freshUuid()),
      file_(folder_.filePath(QStringLiteral("text"))),
      connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_.get()) != 0) fail(QStringLiteral("no display"));
    const QStringList command = commandOf(kind, title_, file_);
    process_.start(command.first(), command.mid(1));
    if (!waitFor([this] { return (window_ = findWindow()) != XCB_NONE; })) {
        fail(QStringLiteral("no window: ") + QString::fromStdString(nameOf(kind)));
    }
    focus();
    nudges_.start();
    if (!waitFor([this] { return isReady(); })) fail(QStringLiteral("no focus in the text field"));
}

bool Receiver::isReady() {
    // The programs make the file when their text field has the focus (xterm: when it reads). The browser does
    // so only when keys reach its page.
    if (QFile::exists(file_)) return true;
    if (nudges_.hasExpired(nudgeInterval)) {
        nudges_.start();
        Keyboard(Keyboard::Device::Synthetic).tap(Key::leftControl);
    }
    return false;
}

Receiver::~Receiver() {
    process_.signal(SIGKILL);
    waitFor([this] { return findWindow() == XCB_NONE; });
}

xcb_window_t Receiver::findWindow() const {
    return windowTitled(connection_.get(), title_);
}

void Receiver::focus() const {
    activate(connection_.get(), window_);
    if (!waitFor([this] { return isActive(connection_.get(), window_); })) {
        fail(QStringLiteral("the window does not get the focus"));
    }
}

QString Receiver::text() const {
    QFile file(file_);
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll()).replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

bool Receiver::waitForText(const QString& expected, std::chrono::milliseconds limit) const {
    return waitFor([&] { return text() == expected; }, limit);
}

void Receiver::freeze() const {
    process_.signal(SIGSTOP);
}
void Receiver::thaw() const {
    process_.signal(SIGCONT);
}

bool waitForActiveWindow(const QString& title) {
    const x11::ConnectionHandle connection(xcb_connect(nullptr, nullptr));
    return waitFor([&] {
        const auto window = windowTitled(connection.get(), title);
        return window != XCB_NONE && isActive(connection.get(), window);
    });
}

std::string nameOf(Receiver::Kind kind) {
    switch (kind) {
        case Receiver::Kind::Xterm:
            return "Xterm";
        case Receiver::Kind::Gtk3:
            return "Gtk3";
        case Receiver::Kind::Gtk4:
            return "Gtk4";
        case Receiver::Kind::Qt:
            return "Qt";
        case Receiver::Kind::Chromium:
            return "Chromium";
    }
    return "Unknown";
}

void PrintTo(Receiver::Kind kind, std::ostream* stream) {
    *stream << nameOf(kind);
}

}  // namespace parlivo::desktop
