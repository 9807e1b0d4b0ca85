// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringView>

#include <functional>

/// Text counted and cut as a user perceives it: by extended grapheme clusters (UAX #29), not by bytes or code
/// units.
namespace parlivo::Text {

qsizetype countCharacters(QStringView text);

/// The first `count` characters, or the whole text when it has no more.
QString firstCharacters(const QString& text, qsizetype count);

/// Calls `visit` with each character in order until it returns false.
void forEachCharacter(QStringView text, const std::function<bool(QStringView)>& visit);

/// `text` without leading and trailing spaces, tabs and other blanks of category Zs; line breaks stay.
QString trimmedBlanks(const QString& text);

}  // namespace parlivo::Text
