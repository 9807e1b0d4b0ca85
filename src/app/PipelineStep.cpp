// SPDX-License-Identifier: MIT
#include "app/PipelineStep.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Error.h"
#include "support/MainQueue.h"
#include "support/Text.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <utility>

namespace parlivo {

namespace {

/// Texts of more characters than this are pasted whatever the typing speed is: typing them would take too
/// long.
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

PipelineStep::PipelineStep(const Collaborators& collaborators, Observer observer)
    : collaborators_(collaborators), observer_(std::move(observer)) {}

bool PipelineStep::isBlankMarker(const QString& transcript) {
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

void PipelineStep::onMain(std::function<void()> job) {
    MainQueue::async(lifetime_.token(), std::move(job));
}

void PipelineStep::run(ScopedFile& recording) {
    try {
        deliver(transcribe(recording));
    } catch (const Error& error) {
        Log::info(QStringLiteral("ERRORE pipeline: ") + error.localizedDescription());
        if (!error.detail().isEmpty()) Log::info(QStringLiteral("dettaglio: ") + error.detail());
        fail(error.localizedDescription(), remedyFor(error));
    }
}

QString PipelineStep::transcribe(ScopedFile& recording) {
    const ScopedFile wav(collaborators_.convert(recording.path()));
    // The recording is deleted as soon as it is converted.
    recording.remove();
    Log::info(QStringLiteral("audio convertito: %1 byte").arg(QFileInfo(wav.path()).size()));
    return collaborators_.transcribe(wav.path());
}

void PipelineStep::deliver(const QString& raw) {
    logTranscript(raw);
    if (raw.isEmpty() || isBlankMarker(raw)) {
        fail(tr("Non ho sentito nulla — controlla il microfono nel menu"), Remedy::SoundSettings);
        return;
    }
    onMain(observer_.onCleaning);
    const QString text = collaborators_.clean(raw);
    if (debugMode()) Log::info(QStringLiteral("testo pulito: ") + quoted(text));
    if (Platform::current().permissions().accessibilityTrusted(Permissions::Prompt::No)) {
        inject(text);
    } else {
        copyInsteadOfTyping(text);
    }
}

void PipelineStep::copyInsteadOfTyping(const QString& text) {
    Log::info(QStringLiteral("iniezione SALTATA: permesso accessibilità mancante"));
    onMain([this, text] {
        const bool copied = Platform::current().pasteboard().setText(text, Pasteboard::History::Keep);
        if (!copied) Log::info(QStringLiteral("testo PERSO: gli appunti non lo hanno preso"));
        observer_.onFailure(
            copied ? tr("Testo copiato negli appunti — manca il permesso Accessibilità (menu)")
                   : tr("Testo perso — manca il permesso Accessibilità e gli appunti non lo hanno preso"),
            Remedy::OpenLog);
        Platform::current().workspace().openPrivacyPane(PrivacyPane::Accessibility);
    });
}

void PipelineStep::inject(const QString& text) {
    onMain(observer_.onTyping);
    const qsizetype characters = Text::countCharacters(text);
    const TypingSpeed speed = Config::get(Settings::typingSpeed);
    const bool pastes = speed == TypingSpeed::Instant || characters > typingCeiling;
    switch (pastes ? collaborators_.paste(text) : collaborators_.typeText(text)) {
        case Injector::Outcome::Delivered:
            Log::info(QStringLiteral("iniezione completata (%1 caratteri)").arg(characters));
            return onMain(observer_.onDone);
        case Injector::Outcome::CutOff:
            Log::info(QStringLiteral("iniezione interrotta (%1 caratteri)").arg(characters));
            return fail(tr("Dettatura interrotta"), Remedy::OpenLog);
        case Injector::Outcome::LeftOnClipboard:
            Log::info(QStringLiteral("iniezione NON RIUSCITA: testo negli appunti"));
            return fail(tr("Testo negli appunti — la finestra attiva non lo ha preso: incollalo tu"),
                        Remedy::OpenLog);
        case Injector::Outcome::RestOnClipboard:
            Log::info(QStringLiteral("iniezione INTERROTTA: resto del testo negli appunti"));
            return fail(tr("Il resto è negli appunti — la finestra attiva non lo ha preso: incollalo tu"),
                        Remedy::OpenLog);
        case Injector::Outcome::Lost:
            Log::info(QStringLiteral("iniezione NON RIUSCITA: nemmeno gli appunti hanno preso il testo"));
            return fail(tr("Testo perso, o in parte — né la finestra attiva né gli appunti lo hanno preso"),
                        Remedy::OpenLog);
    }
}

void PipelineStep::fail(const QString& message, Remedy remedy) {
    onMain([this, message, remedy] { observer_.onFailure(message, remedy); });
}

}  // namespace parlivo
