// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <Foundation/Foundation.h>

#include <vector>

/// How the other fakes make and read objects of Foundation.
namespace parlivo::mac {

NSString* makeString(const QString& text);
QString textOf(NSString* string);
id makeObject(const QVariant& value);
QVariant valueOf(id object);
id makeArray(const std::vector<id>& elements);
/// The error of the fakes' world.
NSError* makeError();

}  // namespace parlivo::mac
