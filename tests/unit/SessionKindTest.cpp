// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/NullDesktop.h"
#include "platform/linux/session/SessionKind.h"
#include "support/UniqueFd.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>

namespace parlivo {
namespace {

DisplayServers servers(bool x11, bool wayland) {
    return {.x11 = [x11] { return x11; }, .wayland = [wayland] { return wayland; }};
}

SessionKind chosen(const char* wanted, bool x11, bool wayland) {
    return chooseSession(QString::fromLatin1(wanted), servers(x11, wayland)).kind;
}

TEST(SessionKindTest, TriesWaylandBeforeX11) {
    EXPECT_EQ(chosen("", true, false), SessionKind::X11);
    EXPECT_EQ(chosen("", false, true), SessionKind::Wayland);
    EXPECT_EQ(chosen("", true, true), SessionKind::Wayland) << "the X server reaches X11 windows only";
    EXPECT_EQ(chosen("", false, false), SessionKind::None);
}

TEST(SessionKindTest, TheVariableOverridesWhatAnswers) {
    EXPECT_EQ(chosen("x11", true, true), SessionKind::X11);
    EXPECT_EQ(chosen("wayland", true, true), SessionKind::Wayland);
    EXPECT_EQ(chosen("none", true, true), SessionKind::None);
    EXPECT_EQ(chosen("x11", false, true), SessionKind::None);
    EXPECT_EQ(chosen("wayland", true, false), SessionKind::None);
    EXPECT_EQ(chosen("mir", true, true), SessionKind::None);
}

TEST(SessionKindTest, SaysWhatIsMissing) {
    const auto reason = [](const char* wanted) {
        return chooseSession(QString::fromLatin1(wanted), servers(false, false)).reason.toStdString();
    };
    EXPECT_EQ(
        reason(""),
        "nessuno schermo: serve una sessione grafica X11 o Wayland (variabile DISPLAY o WAYLAND_DISPLAY)");
    EXPECT_EQ(reason("x11"), "nessuno schermo: serve una sessione grafica X11 (variabile DISPLAY)");
    EXPECT_EQ(reason("wayland"),
              "nessuno schermo: serve una sessione grafica Wayland (variabile WAYLAND_DISPLAY)");
    EXPECT_EQ(reason("none"), "nessuno schermo: PARLIVO_PLATFORM=none");
    EXPECT_EQ(reason("mir"), "PARLIVO_PLATFORM=mir: valore sconosciuto (x11, wayland o none)");
}

/// Variables of the environment, put back at the end.
class Variables {
  public:
    ~Variables() {
        for (const auto& [name, value] : before_) {
            if (value.isNull())
                qunsetenv(name);
            else
                qputenv(name, value);
        }
    }
    Variables() = default;
    Variables(const Variables&) = delete;
    Variables& operator=(const Variables&) = delete;

    void set(const char* name, const QByteArray& value) {
        before_.emplace_back(name, qEnvironmentVariableIsSet(name) ? qgetenv(name) : QByteArray());
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }

  private:
    std::vector<std::pair<const char*, QByteArray>> before_;
};

TEST(SessionKindTest, ACompositorAnswersOnItsSocketOnly) {
    const QTemporaryDir runtime;
    Variables variables;
    variables.set("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    variables.set("WAYLAND_DISPLAY", "wayland-7");
    variables.set("XDG_SESSION_TYPE", QByteArray());
    EXPECT_FALSE(waylandAnswers()) << "a variable that was left over";

    const QByteArray path = (runtime.path() + QStringLiteral("/wayland-7")).toLocal8Bit();
    const UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(static_cast<std::size_t>(path.size()), sizeof address.sun_path);
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));
    ASSERT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_FALSE(waylandAnswers()) << "nobody listens";
    ASSERT_EQ(listen(listener.get(), 1), 0);
    EXPECT_TRUE(waylandAnswers());

    variables.set("WAYLAND_DISPLAY", path);
    EXPECT_TRUE(waylandAnswers()) << "an absolute path";
    variables.set("WAYLAND_DISPLAY", QByteArray(200, 'x'));
    EXPECT_FALSE(waylandAnswers()) << "longer than a socket's name can be";
    variables.set("WAYLAND_DISPLAY", QByteArray());
    EXPECT_FALSE(waylandAnswers()) << "no session of Wayland";
}

TEST(NullDesktopTest, RefusesEverythingAndSaysWhy) {
    NullDesktop desktop(QStringLiteral("motivo"));
    EXPECT_EQ(desktop.startProblem(), QStringLiteral("motivo"));
    EXPECT_FALSE(desktop.canDeliverText());
    EXPECT_EQ(desktop.keyboard().makeSource(u"testo"), nullptr);
    EXPECT_EQ(desktop.keyboard().makeShortcutSource(), nullptr);
    EXPECT_EQ(desktop.floatingPanels().makePanel({}), nullptr);
    EXPECT_EQ(desktop.watchTray([] {}), nullptr);
    const auto handler = desktop.hotKeys().installHandler([] {}, [] {}, {});
    const auto result = desktop.hotKeys().registerHotKey(49, HotKeyModifier::option, {});
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result).status, ENOTSUP);
}

}  // namespace
}  // namespace parlivo
