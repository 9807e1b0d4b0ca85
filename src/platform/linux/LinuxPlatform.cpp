// SPDX-License-Identifier: MIT
#include "platform/linux/LinuxPlatform.h"

#include "platform/Adapters.h"
#include "platform/linux/DesktopFactory.h"
#include "platform/linux/base/ChildSetup.h"
#include "platform/linux/base/InheritedEnvironment.h"

#include <QFile>

#include <utility>

namespace parlivo {

namespace {

/// A session without a bus must stay without: libdbus would start a daemon of its own just for us.
void forbidBusAutolaunch() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return;
    const QString runtime = XdgDirectories::runtime();
    if (!runtime.isEmpty() && QFile::exists(runtime + QStringLiteral("/bus"))) return;
    setOwnVariable("DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null");
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
    setOwnVariable("QT_XCB_GL_INTEGRATION", "none");
}

Desktop& LinuxPlatform::desktop() {
    std::call_once(desktopChosen_, [this] { desktop_ = makeDesktop(); });
    return *desktop_;
}

std::function<void()> LinuxPlatform::childSetup() {
    return linuxChildSetup();
}

QProcessEnvironment LinuxPlatform::childEnvironment() {
    return inheritedEnvironment();
}

void LinuxPlatform::onTerminationRequest(std::function<void()> requested) {
    signals_ = std::make_unique<TerminationSignals>(std::move(requested));
}

void LinuxPlatform::onDisplayLoss(std::function<void()> last) {
    displayLoss_ = std::make_unique<DisplayLoss>(std::move(last));
}

}  // namespace parlivo
