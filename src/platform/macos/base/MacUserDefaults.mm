// SPDX-License-Identifier: MIT
#include "platform/macos/base/MacUserDefaults.h"

#include "platform/macos/base/Strings.h"

#include <QDateTime>

#include <cmath>

namespace parlivo {

namespace {

constexpr double millisecondsASecond = 1000;

QVariant fromNumber(NSNumber* number) {
    const CFTypeRef object = (__bridge CFTypeRef)number;
    if (CFGetTypeID(object) == CFBooleanGetTypeID()) return number.boolValue != NO;
    if (CFNumberIsFloatType(static_cast<CFNumberRef>(object)) != 0) return number.doubleValue;
    return static_cast<qlonglong>(number.longLongValue);
}

QVariant fromDate(NSDate* date) {
    const auto milliseconds =
        static_cast<qint64>(std::round(date.timeIntervalSince1970 * millisecondsASecond));
    return QDateTime::fromMSecsSinceEpoch(milliseconds).toUTC();
}

NSDate* toDate(const QDateTime& date) {
    return [NSDate
        dateWithTimeIntervalSince1970:static_cast<double>(date.toMSecsSinceEpoch()) / millisecondsASecond];
}

/// nil for a type that no setting has.
id toObject(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
            return [NSNumber numberWithBool:value.toBool() ? YES : NO];
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
            return [NSNumber numberWithLongLong:value.toLongLong()];
        case QMetaType::Double:
            return [NSNumber numberWithDouble:value.toDouble()];
        case QMetaType::QDateTime:
            return toDate(value.toDateTime());
        case QMetaType::QString:
            return toNSString(value.toString());
        default:
            return nil;
    }
}

}  // namespace

QVariant MacUserDefaults::value(const QString& key) const {
    const id object = [NSUserDefaults.standardUserDefaults objectForKey:toNSString(key)];
    if ([object isKindOfClass:[NSString class]]) return fromNSString(object);
    if ([object isKindOfClass:[NSNumber class]]) return fromNumber(object);
    if ([object isKindOfClass:[NSDate class]]) return fromDate(object);
    return {};
}

void MacUserDefaults::setValue(const QString& key, const QVariant& value) {
    const id object = toObject(value);
    if (object == nil) return;
    [NSUserDefaults.standardUserDefaults setObject:object forKey:toNSString(key)];
}

void MacUserDefaults::remove(const QString& key) {
    [NSUserDefaults.standardUserDefaults removeObjectForKey:toNSString(key)];
}

}  // namespace parlivo
