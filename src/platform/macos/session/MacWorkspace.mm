// SPDX-License-Identifier: MIT
#include "platform/macos/session/MacWorkspace.h"

#include "platform/macos/base/Strings.h"

#include <AppKit/AppKit.h>

namespace parlivo {

namespace {

QString addressOf(PrivacyPane pane) {
    switch (pane) {
        case PrivacyPane::Microphone:
            return QStringLiteral(
                "x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone");
        case PrivacyPane::Accessibility:
            return QStringLiteral(
                "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility");
    }
    return {};
}

void openAddress(const QString& address) {
    [NSWorkspace.sharedWorkspace openURL:[NSURL URLWithString:toNSString(address)]];
}

}  // namespace

void MacWorkspace::open(const QUrl& url) {
    openAddress(QString::fromLatin1(url.toEncoded()));
}

void MacWorkspace::openPrivacyPane(PrivacyPane pane) {
    openAddress(addressOf(pane));
}

}  // namespace parlivo
