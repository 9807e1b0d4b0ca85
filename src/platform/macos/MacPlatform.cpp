// SPDX-License-Identifier: MIT
#include "platform/macos/MacPlatform.h"

#include "platform/Adapters.h"
#include "platform/macos/base/ChildWatch.h"
#include "platform/macos/base/TerminationEvents.h"

#include <utility>

namespace parlivo {

std::unique_ptr<Platform> makePlatform() {
    return std::make_unique<MacPlatform>();
}

MacPlatform::MacPlatform() = default;
MacPlatform::~MacPlatform() = default;

QString MacPlatform::desktopSummary() {
    return QStringLiteral("macOS: scorciatoia Carbon, testo Quartz, riquadro Cocoa");
}

std::function<void()> MacPlatform::childSetup() {
    return macChildSetup();
}

/// The program sets no variable of its own here.
QProcessEnvironment MacPlatform::childEnvironment() {
    return QProcessEnvironment::systemEnvironment();
}

void MacPlatform::onTerminationRequest(std::function<void()> requested) {
    terminationEvents_ = std::make_unique<TerminationEvents>(std::move(requested));
}

}  // namespace parlivo
