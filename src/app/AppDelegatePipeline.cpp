// The pipeline step of a dictation: everything slow between the recording's end and the text at the cursor.

#include "app/AppDelegate.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Error.h"
#include "support/MainQueue.h"
#include "support/Text.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace parlivo {

namespace {

/// Texts of more characters than this are pasted whatever the typing speed: nobody waits that long.
constexpr qsizetype typingCeiling = 1500;

bool debugMode() {
    return Config::get(Settings::debugMode);
}

QString quoted(const QString& text) {
    return QLatin1Char('"') + text + QLatin1Char('"');
}

void logTranscript(const QString& raw) {
    if (debugMode()) {
        Log::info(QStringLiteral("trascrizione grezza: ") + quoted(raw));
    } else {
        Log::info(QStringLiteral("trascrizione: %1 caratteri").arg(Text::countCharacters(raw)));
    }
}

}  // namespace

bool AppDelegate::isBlankMarker(const QString& transcript) {
    static const std::array markers{
        QStringLiteral("[blank_audio]"),
        QStringLiteral("[silenzio]"),
        QStringLiteral("(silenzio)"),
        QStringLiteral("[musica]"),
        QStringLiteral("[music]"),
        QStringLiteral("♪"),
        QStringLiteral("sottotitoli e revisione a cura di"),
    };
    const QString lower = transcript.toLower();
    return std::any_of(markers.begin(), markers.end(),
                       [&](const QString& marker) { return lower.contains(marker); });
}

void AppDelegate::onMain(std::function<void()> job) {
    MainQueue::async(lifetime_.token(), std::move(job));
}

void AppDelegate::process(ScopedFile& recording) {
    try {
        deliver(transcribe(recording));
    } catch (const Error& error) {
        fail(error);
    }
}

QString AppDelegate::transcribe(ScopedFile& recording) {
    const ScopedFile wav(ask_.convert(recording.path()));
    // The voice is kept no longer than it takes to convert it.
    recording.remove();
    Log::info(QStringLiteral("audio convertito: %1 byte").arg(QFileInfo(wav.path()).size()));
    return ask_.transcribe(wav.path());
}

void AppDelegate::deliver(const QString& raw) {
    logTranscript(raw);
    if (raw.isEmpty() || isBlankMarker(raw)) {
        giveUp(QStringLiteral("Non ho sentito nulla — controlla il microfono nel menu"));
        return;
    }
    onMain([this] { setState(State::cleaning); });
    const QString text = ask_.clean(raw);
    if (debugMode()) Log::info(QStringLiteral("testo pulito: ") + quoted(text));
    if (Platform::current().permissions().accessibilityTrusted(Permissions::Prompt::No)) {
        inject(text);
    } else {
        copyInsteadOfTyping(text);
    }
}

void AppDelegate::copyInsteadOfTyping(const QString& text) {
    Log::info(QStringLiteral("iniezione SALTATA: permesso accessibilità mancante"));
    onMain([text] { Platform::current().pasteboard().setText(text, Pasteboard::History::Keep); });
    giveUp(QStringLiteral("Testo copiato negli appunti — manca il permesso Accessibilità (menu)"));
    onMain([] { Platform::current().workspace().openPrivacyPane(PrivacyPane::Accessibility); });
}

void AppDelegate::inject(const QString& text) {
    onMain([this] {
        setState(State::typing);
        overlay_.hide();
    });
    const qsizetype characters = Text::countCharacters(text);
    const TypingSpeed speed = Config::get(Settings::typingSpeed);
    if (speed == TypingSpeed::Instant || characters > typingCeiling) {
        ask_.paste(text);
    } else {
        ask_.typeText(text);
    }
    Log::info(QStringLiteral("iniezione completata (%1 caratteri)").arg(characters));
    onMain([this] {
        setState(State::idle);
        countDictation();
        ask_.maybePromptForFeedback();
    });
}

void AppDelegate::fail(const Error& error) {
    Log::info(QStringLiteral("ERRORE pipeline: ") + error.localizedDescription());
    giveUp(error.localizedDescription());
}

void AppDelegate::giveUp(const QString& message) {
    onMain([this, message] {
        setState(State::idle);
        overlay_.hide();
        showError(message);
    });
}

void AppDelegate::countDictation() {
    const qint64 count = Config::get(Settings::dictationCount);
    if (count == std::numeric_limits<qint64>::max()) qFatal("dictationCount overflow");
    Config::set(Settings::dictationCount, count + 1);
}

}  // namespace parlivo
