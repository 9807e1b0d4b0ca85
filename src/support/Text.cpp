// SPDX-License-Identifier: MIT
#include "support/Text.h"

#include <QTextBoundaryFinder>

namespace parlivo::Text {

namespace {

bool isBlank(QChar c) {
    return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space;
}

}  // namespace

qsizetype countCharacters(QStringView text) {
    qsizetype count = 0;
    forEachCharacter(text, [&count](QStringView) {
        ++count;
        return true;
    });
    return count;
}

QString firstCharacters(const QString& text, qsizetype count) {
    qsizetype length = 0;
    forEachCharacter(text, [&](QStringView character) {
        if (count-- <= 0) return false;
        length += character.size();
        return true;
    });
    return text.left(length);
}

void forEachCharacter(QStringView text, const std::function<bool(QStringView)>& visit) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
        if (end > start && !visit(text.sliced(start, end - start))) return;
        start = end;
    }
}

QString trimmedBlanks(const QString& text) {
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && isBlank(text[start])) ++start;
    while (end > start && isBlank(text[end - 1])) --end;
    return text.sliced(start, end - start);
}

}  // namespace parlivo::Text
