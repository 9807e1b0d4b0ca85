// SPDX-License-Identifier: MIT
#include "platform/macos/base/MacBundle.h"

#include "platform/macos/base/Strings.h"

#include <QFileInfo>

namespace parlivo {

namespace {

std::optional<QString> versionIn(NSBundle* bundle) {
    const id version = [bundle objectForInfoDictionaryKey:@"CFBundleShortVersionString"];
    if (![version isKindOfClass:[NSString class]]) return std::nullopt;
    return fromNSString(version);
}

}  // namespace

std::optional<QString> shortVersionOf(const QString& bundle) {
    return versionIn([NSBundle bundleWithPath:toNSString(bundle)]);
}

QString MacBundle::location() const {
    return QFileInfo(fromNSString(NSBundle.mainBundle.bundlePath)).canonicalFilePath();
}

std::optional<QString> MacBundle::resource(const QString& name) const {
    NSString* const path = [NSBundle.mainBundle pathForResource:toNSString(name) ofType:nil];
    if (path == nil) return std::nullopt;
    return fromNSString(path);
}

std::optional<QString> MacBundle::shortVersion() const {
    return versionIn(NSBundle.mainBundle);
}

}  // namespace parlivo
