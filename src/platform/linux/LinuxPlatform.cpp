#include "platform/linux/LinuxPlatform.h"

#include "platform/Adapters.h"
#include "platform/linux/base/ChildSetup.h"

#include <QFile>

#include <xcb/xcb.h>

#include <utility>

namespace parlivo {

namespace {

bool displayAnswers() {
    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    return xcb_connection_has_error(connection.get()) == 0;
}

/// A session without a bus must stay without: libdbus would start a daemon of its own just for us.
void forbidBusAutolaunch() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return;
    const QString runtime = XdgDirectories::runtime();
    if (!runtime.isEmpty() && QFile::exists(runtime + QStringLiteral("/bus"))) return;
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null");
}

}  // namespace

std::unique_ptr<Platform> makePlatform() {
    return std::make_unique<LinuxPlatform>();
}

LinuxPlatform::LinuxPlatform()
    : userDefaults_(XdgDirectories::configuration() + QStringLiteral("/Parlivo.json"),
                    [this](const QString& complaint) { systemLog_.write(complaint); }) {
    forbidBusAutolaunch();
    // Nothing here draws with OpenGL; without it the program starts faster and keeps some 20 MB less in
    // memory.
    qputenv("QT_XCB_GL_INTEGRATION", "none");
}

Sounds& LinuxPlatform::sounds() {
    if (!sounds_) sounds_ = std::make_unique<PulseSounds>(bundle_);
    return *sounds_;
}

std::optional<QString> LinuxPlatform::startProblem() {
    if (displayAnswers()) return std::nullopt;
    return QStringLiteral("nessuno schermo: serve una sessione grafica X11 (variabile DISPLAY)");
}

std::function<void()> LinuxPlatform::childSetup() {
    return linuxChildSetup();
}

void LinuxPlatform::onTerminationRequest(std::function<void()> requested) {
    signals_ = std::make_unique<TerminationSignals>(std::move(requested));
}

}  // namespace parlivo
