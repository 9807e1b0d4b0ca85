#include "platform/macos/base/MacBundle.h"

#include "platform/macos/base/Strings.h"

#include <QFileInfo>

namespace parlivo {

QString MacBundle::location() const {
    return QFileInfo(fromNSString(NSBundle.mainBundle.bundlePath)).canonicalFilePath();
}

std::optional<QString> MacBundle::resource(const QString& name) const {
    NSString* const path = [NSBundle.mainBundle pathForResource:toNSString(name) ofType:nil];
    if (path == nil) return std::nullopt;
    return fromNSString(path);
}

std::optional<QString> MacBundle::shortVersion() const {
    const id version = [NSBundle.mainBundle objectForInfoDictionaryKey:@"CFBundleShortVersionString"];
    if (![version isKindOfClass:[NSString class]]) return std::nullopt;
    return fromNSString(version);
}

}  // namespace parlivo
