// SPDX-License-Identifier: MIT
#include "update/Versions.h"

#include <QList>
#include <QStringView>

#include <algorithm>
#include <optional>
#include <vector>

namespace parlivo {

namespace {

/// Digits only: toLongLong alone would take blanks and a sign too.
std::optional<qint64> plainNumber(QStringView piece) {
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    if (!std::all_of(piece.begin(), piece.end(), isDigit)) return std::nullopt;
    bool fits = false;
    const qint64 number = piece.toLongLong(&fits);
    if (!fits) return std::nullopt;
    return number;
}

std::vector<qint64> numbers(const QString& version) {
    std::vector<qint64> found;
    for (const QStringView piece : QStringView(version).split(QLatin1Char('.'), Qt::SkipEmptyParts)) {
        if (const auto number = plainNumber(piece)) found.push_back(*number);
    }
    return found;
}

}  // namespace

bool isNewer(const QString& a, const QString& b) {
    std::vector<qint64> left = numbers(a);
    std::vector<qint64> right = numbers(b);
    const auto length = std::max(left.size(), right.size());
    left.resize(length);
    right.resize(length);
    return left > right;
}

}  // namespace parlivo
