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
/// How long the receiver of a paste may take to ask for the text, where the system tells that it has.
constexpr auto readTimeout = 1500ms;
constexpr auto readPollInterval = 5ms;
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
    bool notTaken = false;  ///< why it failed: the receiver stands still
};

void count(Progress& progress, QStringView text, Posted posted) {
    progress.notTaken = posted == Posted::NotTaken;
    progress.failed = posted == Posted::Failed || progress.notTaken;
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

struct Piece {
    QStringView text;
    qsizetype characters = 0;
};

/// The whole characters at the beginning of `text`, `most` of them at most, that fit into one piece.
Piece firstPiece(QStringView text, qsizetype most) {
    Piece piece;
    qsizetype length = 0;
    qsizetype bytes = 0;
    Text::forEachCharacter(text, [&](QStringView character) {
        bytes += character.toUtf8().size();
        if (length > 0 && bytes > KeyEventSource::maxPieceBytes) return false;
        length += character.size();
        return ++piece.characters < most;
    });
    piece.text = text.first(length);
    return piece;
}

/// The same pace with as many characters at once as have become due since the last piece, however long its
/// receiver took.
Progress typePieces(const QString& text, KeyEventSource& source, Clock::Duration pause) {
    Progress progress;
    auto due = Clock::now();  // of the next character
    while (progress.posted < text.size() && !progress.failed && !Clock::interrupted()) {
        const auto start = Clock::now();
        const auto most = std::max<qsizetype>(1, (start + pieceInterval - due) / pause);
        const auto piece = firstPiece(QStringView(text).sliced(progress.posted), most);
        count(progress, piece.text, source.postPiece(piece.text));
        due += piece.characters * pause;
        if (!Clock::sleepUntil(std::max(due, start + pieceInterval))) break;
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

/// Whether somebody has read the pasteboard since it was read `before` times, as far as the system tells. Who
/// reads need not be the receiver; but where nobody reads, nothing was pasted.
bool isRead(Pasteboard& pasteboard, std::optional<int> before) {
    if (!before) return true;
    const Clock::Deadline deadline(readTimeout);
    while (pasteboard.timesRead() == before && !deadline.passed()) {
        if (!Clock::sleepFor(readPollInterval)) return true;
    }
    return pasteboard.timesRead() != before;
}

/// Puts the text there anew if it is gone: what kept it for us may have ended meanwhile.
bool staysOn(Pasteboard& pasteboard, const QString& text) {
    return pasteboard.texts().value(PasteboardPlace::Clipboard) == text ||
           pasteboard.setText(text, Pasteboard::History::Keep);
}

/// A shortcut would come as late as the text, when the pasteboard holds something else again.
Outcome leaveOnClipboard(const QString& rest) {
    Log::info(QStringLiteral("l'applicazione non prende il testo: il resto va negli appunti"));
    pendingRestore().callOff();
    return Platform::current().pasteboard().setText(rest, Pasteboard::History::Keep)
               ? Outcome::LeftOnClipboard
               : Outcome::Lost;
}

/// By other means than those that failed after `progress`.
Outcome deliverRest(const QString& text, const Progress& progress) {
    const QString rest = text.sliced(progress.posted);
    if (!progress.notTaken)
        Log::info(QStringLiteral("tastiera cambiata durante la digitazione: il resto viene incollato"));
    const Outcome outcome = progress.notTaken ? leaveOnClipboard(rest) : paste(rest);
    const bool begun = progress.posted > 0;
    return begun && outcome == Outcome::LeftOnClipboard ? Outcome::RestOnClipboard : outcome;
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
    return deliverRest(text, progress);
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
    if (!pasteboard.setText(text, Pasteboard::History::Omit)) {
        if (Clock::interrupted()) return Outcome::CutOff;
        // The shortcut would paste what the user had copied; a place that was changed gets that back.
        restoreNow(ticket);
        return Outcome::Lost;
    }
    if (!Clock::sleepFor(pasteboardSettling)) return Outcome::CutOff;
    auto source = Platform::current().keyboard().makeShortcutSource();
    const auto readBefore = pasteboard.timesRead();
    const auto posted = source ? postKey(VirtualKey::v, *source, KeyFlag::command) : Posted::Failed;
    if (Clock::interrupted() && posted != Posted::Yes) return Outcome::CutOff;
    if (posted != Posted::Yes || !isRead(pasteboard, readBefore)) {
        // Nothing was pasted: the text stays where the user can take it from.
        pendingRestore().callOff();
        return staysOn(pasteboard, text) ? Outcome::LeftOnClipboard : Outcome::Lost;
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
