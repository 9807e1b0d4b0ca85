// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "update/Versions.h"

#include <QList>

namespace parlivo::fuzz {

/// Three versions, one a line.
void attack(const QByteArray& input) {
    const QList<QByteArray> lines = input.split('\n');
    const QString a = QString::fromUtf8(lines.value(0));
    const QString b = QString::fromUtf8(lines.value(1));
    const QString c = QString::fromUtf8(lines.value(2));
    expect(!isNewer(a, a), "no version is newer than itself");
    expect(!isNewer(a, b) || !isNewer(b, a), "one of two is newer");
    expect(!isNewer(a, b) || !isNewer(b, c) || isNewer(a, c), "what is newer than the newer is newer");
    expect(isNewer(a, b) || isNewer(b, a) || isNewer(a, c) == isNewer(b, c), "equal ones compare alike");
    expect(isNewer(a + QStringLiteral(".0"), b) == isNewer(a, b), "a zero at the end says nothing");
    expect(isNewer(QStringLiteral("..x.") + a, b) == isNewer(a, b), "what is no number is left out");
}

}  // namespace parlivo::fuzz
