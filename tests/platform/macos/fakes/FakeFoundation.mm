// SPDX-License-Identifier: MIT

// Foundation, as far as the adapters use it.
#include "platform/macos/fakes/FakeFoundation.h"

#include "platform/macos/fakes/Calls.h"
#include "platform/macos/fakes/FakeObjects.h"

#include <cstring>
#include <map>

using namespace parlivo;

extern "C" {
// Of the compiler's Objective-C runtime.
id class_createInstance(Class type, std::size_t extraBytes);
Class class_getSuperclass(Class type);
}

namespace {

/// What fake objects hold beside their class.
struct Content {
    QVariant value;
    std::vector<id> elements;
    QString domain;
    long code = 0;
};

std::map<const void*, Content>& contents() {
    static std::map<const void*, Content> all;
    return all;
}

template <typename Object>
Content& of(Object* object) {
    return contents()[(__bridge const void*)object];
}

id instanceOf(Class type) {
    return class_createInstance(type, 0);
}

mac::World& current() {
    static mac::World world;
    return world;
}

}  // namespace

namespace parlivo::mac {

World& world() {
    return current();
}

void renewWorld() {
    current() = {};
}

NSString* makeString(const QString& text) {
    NSString* const string = instanceOf([NSString class]);
    of(string).value = text;
    return string;
}

QString textOf(NSString* string) {
    if (string == nil) return {};
    QString text(static_cast<qsizetype>(string.length), Qt::Uninitialized);
    [string getCharacters:reinterpret_cast<unichar*>(text.data())];
    return text;
}

id makeObject(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::QString:
            return makeString(value.toString());
        case QMetaType::QDateTime:
            return [NSDate
                dateWithTimeIntervalSince1970:static_cast<double>(value.toDateTime().toMSecsSinceEpoch()) /
                                              1000];
        case QMetaType::UnknownType:
            return nil;
        default: {
            NSNumber* const number = instanceOf([NSNumber class]);
            of(number).value = value;
            return number;
        }
    }
}

QVariant valueOf(id object) {
    if ([object isKindOfClass:[NSString class]]) return textOf(object);
    if ([object isKindOfClass:[NSDate class]])
        return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>([object timeIntervalSince1970] * 1000))
            .toUTC();
    return of(static_cast<NSObject*>(object)).value;
}

id makeArray(const std::vector<id>& elements) {
    NSArray* const array = instanceOf([NSArray class]);
    of(array).elements = elements;
    return array;
}

NSError* makeError() {
    NSError* const error = instanceOf([NSError class]);
    of(error).domain = QStringLiteral("SMAppServiceErrorDomain");
    of(error).code = 1;
    return error;
}

}  // namespace parlivo::mac

@implementation NSObject
+ (instancetype)alloc {
    return instanceOf(self);
}
+ (Class)class {
    return self;
}
- (instancetype)init {
    return self;
}
- (BOOL)isKindOfClass:(Class)aClass {
    for (Class type = isa; type != nil; type = class_getSuperclass(type))
        if (type == aClass) return YES;
    return NO;
}
@end

@implementation NSString
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length {
    return mac::makeString(
        QString::fromUtf16(reinterpret_cast<const char16_t*>(characters), static_cast<qsizetype>(length)));
}
- (NSUInteger)length {
    return static_cast<NSUInteger>(of(self).value.toString().size());
}
- (void)getCharacters:(unichar*)buffer {
    const QString text = of(self).value.toString();
    std::memcpy(buffer, text.utf16(), static_cast<std::size_t>(text.size()) * sizeof(unichar));
}
@end

@implementation NSConstantString
- (NSUInteger)length {
    return size_;
}
- (void)getCharacters:(unichar*)buffer {
    for (unsigned i = 0; i < size_; ++i) buffer[i] = static_cast<unsigned char>(bytes_[i]);
}
@end

@implementation NSNumber
+ (NSNumber*)numberWithBool:(BOOL)value {
    return mac::makeObject(value != NO);
}
+ (NSNumber*)numberWithLongLong:(long long)value {
    return mac::makeObject(static_cast<qlonglong>(value));
}
+ (NSNumber*)numberWithDouble:(double)value {
    return mac::makeObject(value);
}
- (BOOL)boolValue {
    return of(self).value.toBool() ? YES : NO;
}
- (long long)longLongValue {
    return of(self).value.toLongLong();
}
- (double)doubleValue {
    return of(self).value.toDouble();
}
@end

@implementation NSDate
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)secs {
    NSDate* const date = instanceOf(self);
    of(date).value = secs;
    return date;
}
- (NSTimeInterval)timeIntervalSince1970 {
    return of(self).value.toDouble();
}
@end

@implementation NSArray
- (id)firstObject {
    return of(self).elements.empty() ? nil : of(self).elements.front();
}
@end

@implementation NSError
- (NSInteger)code {
    return of(self).code;
}
- (NSString*)domain {
    return mac::makeString(of(self).domain);
}
- (NSString*)localizedDescription {
    return mac::makeString(current().errorWords);
}
@end

@implementation NSURL
+ (instancetype)URLWithString:(NSString*)URLString {
    NSURL* const url = instanceOf(self);
    of(url).value = mac::textOf(URLString);
    return url;
}
@end

@implementation NSUserDefaults
+ (NSUserDefaults*)standardUserDefaults {
    static NSUserDefaults* const defaults = instanceOf(self);
    return defaults;
}
- (id)objectForKey:(NSString*)defaultName {
    const auto found = current().defaults.find(mac::textOf(defaultName));
    return found == current().defaults.end() ? nil : mac::makeObject(found->second);
}
- (void)setObject:(id)value forKey:(NSString*)defaultName {
    current().defaults[mac::textOf(defaultName)] = mac::valueOf(value);
}
- (void)removeObjectForKey:(NSString*)defaultName {
    current().defaults.erase(mac::textOf(defaultName));
}
@end

@implementation NSBundle
+ (NSBundle*)mainBundle {
    static NSBundle* const bundle = instanceOf(self);
    return bundle;
}
+ (NSBundle*)bundleWithPath:(NSString*)path {
    const auto found = current().otherBundles.find(mac::textOf(path));
    if (found == current().otherBundles.end()) return nil;
    NSBundle* const bundle = instanceOf(self);
    of(bundle).value = found->first;
    return bundle;
}
- (NSString*)bundlePath {
    return mac::makeString(current().bundlePath);
}
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)ext {
    mac::record(QStringLiteral("resource %1 of type %2")
                    .arg(mac::textOf(name), ext == nil ? QStringLiteral("nil") : mac::textOf(ext)));
    const auto found = current().resources.find(mac::textOf(name));
    return found == current().resources.end() ? nil : mac::makeString(found->second);
}
- (id)objectForInfoDictionaryKey:(NSString*)key {
    const QString path = of(self).value.toString();
    const auto& information = path.isEmpty() ? current().information : current().otherBundles.at(path);
    const auto found = information.find(mac::textOf(key));
    return found == information.end() ? nil : mac::makeObject(found->second);
}
@end

@implementation NSProcessInfo
+ (NSProcessInfo*)processInfo {
    static NSProcessInfo* const info = instanceOf(self);
    return info;
}
- (NSString*)operatingSystemVersionString {
    return @"Version 14.5 (Build 23F79)";
}
@end

NSArray<NSString*>* NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                        NSSearchPathDomainMask domainMask, BOOL expandTilde) {
    if (domainMask != NSUserDomainMask || !expandTilde) return mac::makeArray({});
    return mac::makeArray({directory == NSLibraryDirectory ? @"/Users/ada/Library"
                                                           : @"/Users/ada/Library/Application Support"});
}

NSString* NSHomeDirectory() {
    return @"/Users/ada";
}

NSString* NSTemporaryDirectory() {
    return @"/var/folders/zz/T/";
}

CFTypeID CFBooleanGetTypeID() {
    return 21;
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
    return contents()[cf].value.typeId() == QMetaType::Bool ? CFBooleanGetTypeID() : 22;
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
    return contents()[number].value.typeId() == QMetaType::Double;
}
