// SPDX-License-Identifier: MIT
#include "app/ErrorNotices.h"

#include "models/ModelPaths.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"

#include <QFileInfo>
#include <QUrl>

#include <utility>

namespace parlivo {

namespace {

void openSoundSettings() {
    Platform::current().workspace().openPrivacyPane(PrivacyPane::Microphone);
}

void openLogFolder() {
    Platform::current().workspace().open(QUrl::fromLocalFile(QFileInfo(Log::path()).path()));
}

}  // namespace

Remedy remedyFor(const Error& error) {
    const auto is = [&](ErrorCode code) {
        return error.domain() == Error::programDomain() && error.code() == static_cast<int>(code);
    };
    if (is(ErrorCode::MicrophoneUnavailable)) return Remedy::SoundSettings;
    if (is(ErrorCode::WhisperNotResponding) && !Config::hasUsableModel()) return Remedy::Download;
    return Remedy::OpenLog;
}

ErrorNotices::ErrorNotices(Actions actions) : actions_(std::move(actions)) {}

void ErrorNotices::show(const QString& message, Remedy remedy) {
    if (!Config::get(Settings::notificationsEnabled)) return;
    const auto label = [remedy] {
        switch (remedy) {
            case Remedy::OpenLog:
                break;
            case Remedy::SoundSettings:
                return tr("Impostazioni audio");
            case Remedy::Download:
                return tr("Scarica…");
            case Remedy::ChooseKey:
                return tr("Scegli la scorciatoia…");
        }
        return tr("Apri la cartella del log");
    };
    hotKeyShown_ = remedy == Remedy::ChooseKey;
    Platform::current().notifications().show(
        {.text = message, .actionLabel = label(), .onAction = actionOf(remedy)});
}

std::function<void()> ErrorNotices::actionOf(Remedy remedy) const {
    switch (remedy) {
        case Remedy::OpenLog:
            break;
        case Remedy::SoundSettings:
            return openSoundSettings;
        case Remedy::Download:
            return actions_.showDownloads;
        case Remedy::ChooseKey:
            return actions_.showHotKeyChoice;
    }
    return openLogFolder;
}

void ErrorNotices::showHotKey(const std::optional<QString>& warning) {
    if (std::exchange(hotKeyWarning_, warning) == warning) return;
    if (warning) {
        show(*warning, Remedy::ChooseKey);
    } else if (std::exchange(hotKeyShown_, false)) {
        Platform::current().notifications().withdraw();
    }
}

}  // namespace parlivo
