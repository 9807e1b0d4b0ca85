// SPDX-License-Identifier: MIT
#include "platform/macos/base/MacDirectories.h"

#include "platform/macos/base/Strings.h"

#include <QDir>

namespace parlivo {

namespace {

QString userFolder(NSSearchPathDirectory directory) {
    return fromNSString(NSSearchPathForDirectoriesInDomains(directory, NSUserDomainMask, YES).firstObject);
}

}  // namespace

QString MacDirectories::applicationSupport() const {
    return userFolder(NSApplicationSupportDirectory);
}

QString MacDirectories::logs() const {
    return userFolder(NSLibraryDirectory) + QStringLiteral("/Logs");
}

QString MacDirectories::home() const {
    return fromNSString(NSHomeDirectory());
}

/// The system's ends with a slash.
QString MacDirectories::temporary() const {
    return QDir::cleanPath(fromNSString(NSTemporaryDirectory()));
}

}  // namespace parlivo
