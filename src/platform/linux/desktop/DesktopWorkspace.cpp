// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/DesktopWorkspace.h"

#include <QProcess>
#include <QStandardPaths>

#include <array>

namespace parlivo {

namespace {

/// A program with the desktop's sound settings. Some refuse to run on any other desktop than their own.
struct SoundSettings {
    const char* program;
    const char* page;
    const char* onlyDesktop;  // as XDG_CURRENT_DESKTOP names it, or null
};

constexpr std::array soundSettings{
    SoundSettings{"gnome-control-center", "sound", "GNOME"},
    SoundSettings{"systemsettings", "kcm_pulseaudio", nullptr},
    SoundSettings{"xfce4-settings-manager", nullptr, "XFCE"},
    SoundSettings{"pavucontrol", nullptr, nullptr},
};

bool fitsDesktop(const SoundSettings& settings) {
    const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    return !settings.onlyDesktop || desktop.isEmpty() ||
           desktop.contains(QLatin1String(settings.onlyDesktop), Qt::CaseInsensitive);
}

QStringList arguments(const SoundSettings& settings) {
    return settings.page ? QStringList(QString::fromLatin1(settings.page)) : QStringList();
}

}  // namespace

void DesktopWorkspace::open(const QUrl& url) {
    start(QStringLiteral("xdg-open"), {url.toString(QUrl::FullyEncoded)});
}

void DesktopWorkspace::openPrivacyPane(PrivacyPane pane) {
    switch (pane) {
        case PrivacyPane::Microphone:
            return openSoundSettings();
        case PrivacyPane::Accessibility:
            return openHelp(QStringLiteral("accessibilita.html"));
    }
}

void DesktopWorkspace::openSoundSettings() {
    for (const SoundSettings& settings : soundSettings) {
        const QString program = QStandardPaths::findExecutable(QString::fromLatin1(settings.program));
        if (!program.isEmpty() && fitsDesktop(settings)) return start(program, arguments(settings));
    }
    openHelp(QStringLiteral("microfono.html"));
}

void DesktopWorkspace::openHelp(const QString& page) {
    const auto file = bundle_.resource(QStringLiteral("help/") + page);
    if (file) return open(QUrl::fromLocalFile(*file));
    log_.write(QStringLiteral("pagina di aiuto mancante: ") + page);
}

void DesktopWorkspace::start(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setProcessEnvironment(environment_);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached()) log_.write(QStringLiteral("impossibile avviare ") + program);
}

}  // namespace parlivo
