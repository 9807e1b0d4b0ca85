// SPDX-License-Identifier: MIT
#include "input/Injector.h"

#include "input/Pace.h"
#include "input/PendingRestore.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Clock.h"
#include "support/MainQueue.h"
#include "support/Text.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace parlivo::Injector {

namespace {

using namespace std::chrono_literals;

constexpr auto naturalPause = 12'000us;
constexpr auto fastPause = 3'500us;
/// The time until every application sees the new contents of the pasteboard.
constexpr auto pasteboardSettling = 50ms;
constexpr auto restoreDelay = 500ms;
/// Between two pieces of a text: receivers that read late must not be sent too many of them.
constexpr auto pieceInterval = 56ms;

bool isLineEnd(QStringView character) {
    return character == QLatin1String("\n") || character == QLatin1String("\r");
}

Posted post(QStringView character, KeyEventSource& source) {
    if (isLineEnd(character)) return postKey(VirtualKey::returnKey, source, KeyFlag::none);
    if (character == QLatin1String("\t")) return postKey(VirtualKey::tab, source, KeyFlag::none);
    return source.postCharacter(character);
}

/// How far a text has come.
struct Progress {
    qsizetype posted = 0;   ///< UTF-16 units, those of skipped characters included
    qsizetype skipped = 0;  ///< characters
    bool failed = false;
};

void count(Progress& progress, QStringView text, Posted posted) {
    progress.failed = posted == Posted::Failed;
    if (progress.failed) return;
    progress.posted += text.size();
    if (posted == Posted::Skipped) ++progress.skipped;
}

Progress typeCharacters(const QString& text, KeyEventSource& source, Clock::Duration pause) {
    Progress progress;
    Pace pace(pause, Clock::now());
    Text::forEachCharacter(text, [&](QStringView character) {
        if (Clock::interrupted()) return false;
        count(progress, character, post(character, source));
        return !progress.failed && Clock::sleepUntil(pace.after(Clock::now()));
    });
    return progress;
}

/// The whole characters at the beginning of `text`, `most` of them at most, that fit into one piece.
QStringView firstPiece(QStringView text, qsizetype most) {
    qsizetype length = 0;
    qsizetype bytes = 0;
    Text::forEachCharacter(text, [&](QStringView character) {
        bytes += character.toUtf8().size();
        if (length > 0 && bytes > KeyEventSource::maxPieceBytes) return false;
        length += character.size();
        return --most > 0;
    });
    return text.first(length);
}

/// The same pace with as many characters at once as have become due since the last piece.
Progress typePieces(const QString& text, KeyEventSource& source, Clock::Duration pause) {
    Progress progress;
    auto due = Clock::now();
    while (progress.posted < text.size() && !progress.failed && !Clock::interrupted()) {
        const auto late = std::max(Clock::now() - due, Clock::Duration::zero());
        const auto piece = firstPiece(QStringView(text).sliced(progress.posted),
                                      std::max<qsizetype>(1, (late + pieceInterval) / pause));
        count(progress, piece, source.postPiece(piece));
        due = Clock::now() + std::max<Clock::Duration>(pieceInterval, pause);
        if (!Clock::sleepUntil(due)) break;
    }
    return progress;
}

PendingRestore& pendingRestore() {
    static PendingRestore pending;
    return pending;
}

void restoreNow(PendingRestore::Ticket ticket) {
    const auto kept = pendingRestore().take(ticket);
    if (kept && !kept->isEmpty()) Platform::current().pasteboard().restore(*kept);
}

void scheduleRestore(PendingRestore::Ticket ticket) {
    static const Lifetime always;
    pendingRestore().setDue(ticket, Clock::Deadline(restoreDelay).end());
    MainQueue::after(restoreDelay, always.token(), [ticket] { restoreNow(ticket); });
}

}  // namespace

Clock::Duration pauseAfterCharacter(TypingSpeed speed) {
    return speed == TypingSpeed::Natural ? naturalPause : fastPause;
}

Outcome typeText(const QString& text) {
    auto source = Platform::current().keyboard().makeSource(text);
    if (!source) return paste(text);
    const auto pause = pauseAfterCharacter(Config::get(Settings::typingSpeed));
    const auto progress = source->intake() == TextIntake::Pieces ? typePieces(text, *source, pause)
                                                                 : typeCharacters(text, *source, pause);
    if (progress.skipped > 0)
        Log::info(QStringLiteral("caratteri senza un tasto, non digitati: %1").arg(progress.skipped));
    if (progress.posted == text.size()) return Outcome::Delivered;
    if (Clock::interrupted()) return Outcome::CutOff;
    source.reset();  // the user's keyboard state is back before the shortcut
    Log::info(QStringLiteral("tastiera cambiata durante la digitazione: il resto viene incollato"));
    return paste(text.sliced(progress.posted));
}

Outcome paste(const QString& text) {
    if (Clock::interrupted()) return Outcome::CutOff;
    Pasteboard& pasteboard = Platform::current().pasteboard();
    // A paste whose restore is still to come is called off first: what it kept is what the user had.
    auto interruptedRestore = pendingRestore().callOff();
    const auto present = pasteboard.texts();
    if (Clock::interrupted()) {
        // Then the reading may be incomplete; nothing was changed yet.
        pendingRestore().resume(std::move(interruptedRestore));
        return Outcome::CutOff;
    }
    const auto ticket = pendingRestore().keep(text, present, interruptedRestore);
    pasteboard.setText(text, Pasteboard::History::Omit);
    if (!Clock::sleepFor(pasteboardSettling)) return Outcome::CutOff;
    auto source = Platform::current().keyboard().makeShortcutSource();
    const auto posted = source ? postKey(VirtualKey::v, *source, KeyFlag::command) : Posted::Failed;
    if (Clock::interrupted() && posted != Posted::Yes) return Outcome::CutOff;
    if (posted != Posted::Yes) {
        // Nothing was pasted: the text stays where the user can take it from.
        pendingRestore().callOff();
        return Outcome::LeftOnClipboard;
    }
    scheduleRestore(ticket);
    return Outcome::Delivered;
}

Posted postKey(KeyCode key, KeyEventSource& source, KeyFlags flags) {
    return source.postKey(key, flags);
}

void finishRestore() {
    const auto pending = pendingRestore().last();
    if (!pending) return;
    const auto remaining = std::chrono::ceil<std::chrono::milliseconds>(pending->due - Clock::now());
    QEventLoop loop;
    QTimer::singleShot(std::max(remaining, 0ms), Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    restoreNow(pending->ticket);
}

}  // namespace parlivo::Injector
