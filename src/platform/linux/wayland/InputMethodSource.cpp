// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/InputMethodSource.h"

#include <QString>

#include <algorithm>
#include <chrono>

namespace parlivo::wayland {

namespace {

using namespace std::chrono_literals;

/// A field is left and entered within milliseconds when the focus moves from one to another.
constexpr auto activationTimeout = 1s;
/// How long a reaction is waited for before the next piece, and without any before the text is given up.
constexpr auto answerTimeout = 1s;
constexpr auto wholeTimeout = 10s;

bool isLeftOut(QChar unit) {
    return (unit < u' ' && unit != u'\n' && unit != u'\t') || unit == QChar(0x7f);
}

QByteArray committable(QStringView piece) {
    QString text = piece.toString();
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.removeIf(isLeftOut);
    return text.toUtf8();
}

}  // namespace

Posted InputMethodSource::postPiece(QStringView piece) {
    const QByteArray text = committable(piece);
    if (text.isEmpty()) return Posted::Skipped;
    if (!mayGoOn()) return Posted::NotTaken;
    if (!method_->waitUntilActive(Clock::Deadline(activationTimeout).end())) return Posted::Failed;
    return method_->commit(text) == InputMethod::Commit::Accepted ? Posted::Yes : Posted::Failed;
}

bool InputMethodSource::mayGoOn() {
    const auto start = Clock::now();
    if (method_->waitForAnswer(Clock::Deadline(answerTimeout).end())) {
        waited_ = {};
        return true;
    }
    waited_ += Clock::now() - start;
    return waited_ < Clock::scaled(wholeTimeout) && !Clock::interrupted();
}

}  // namespace parlivo::wayland
