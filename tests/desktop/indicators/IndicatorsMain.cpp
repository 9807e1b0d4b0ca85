// SPDX-License-Identifier: MIT

// The program's indicators alone, on the real desktop: the status item with its menu and the overlay, doing
// what the lines of the standard input say and telling on the standard output what the user chose.
//
//   title TEXT            icon SYMBOL none|red|orange|purple|blue
//   mic authorised|asked|denied        trusted yes|no        update VERSION|none
//   show    rest    hide    level 0..1    frames    popup
//   lines                  the open menu, each line with the place of its middle: "X Y TEXT"
//   restate                the permission lines change at the next opening of the menu
//
// Every line is answered with "done" when it is carried out.

#include "app/menu/StatusMenu.h"
#include "audio/overlay/DictationOverlay.h"
#include "platform/Adapters.h"
#include "platform/Platform.h"
#include "ui/views/Signs.h"

#include <QApplication>
#include <QCursor>
#include <QSocketNotifier>

#include <unistd.h>

#include <array>
#include <cstdio>
#include <functional>
#include <map>
#include <string>

namespace parlivo {
namespace {

void say(const QString& line) {
    std::puts(line.toUtf8().constData());
    std::fflush(stdout);
}

class Indicators {
  public:
    Indicators() {
        overlay_.setLevelProvider([this] {
            ++frames_;
            return level_;
        });
        menu_.setTitle(QStringLiteral("Pronto — tieni premuto ⌥Spazio per dettare"));
        menu_.setIcon(QStringLiteral("mic"), Tint::None);
    }

    void perform(const QString& line) {
        const QString verb = line.section(QLatin1Char(' '), 0, 0);
        const QString rest = line.section(QLatin1Char(' '), 1);
        const auto found = verbs_.find(verb);
        if (found == verbs_.end()) {
            say(QStringLiteral("unknown ") + line);
            return;
        }
        found->second(rest);
        say(QStringLiteral("done"));
    }

  private:
    StatusMenu::Actions actions() {
        const auto chosen = [](const char* what) {
            return [what] { say(QStringLiteral("chosen ") + QString::fromLatin1(what)); };
        };
        return {.willOpen = [this] { willOpen(); },
                .openMicSettings = chosen("microphone"),
                .openAccessibilitySettings = chosen("accessibility"),
                .installUpdate = chosen("update"),
                .openSettings = chosen("settings"),
                .openFeedback = chosen("feedback"),
                .quit = chosen("quit")};
    }

    void willOpen() {
        say(QStringLiteral("opening"));
        if (!restate_) return;
        menu_.setMicrophone(MicrophoneStatus::Authorised);
        menu_.setAccessibility(true);
    }

    void setIcon(const QString& symbolAndTint) {
        static const std::map<QString, Tint> tints{{QStringLiteral("none"), Tint::None},
                                                   {QStringLiteral("red"), Tint::Red},
                                                   {QStringLiteral("orange"), Tint::Orange},
                                                   {QStringLiteral("purple"), Tint::Purple},
                                                   {QStringLiteral("blue"), Tint::Blue}};
        const QStringList words = symbolAndTint.split(QLatin1Char(' '));
        menu_.setIcon(words.value(0), tints.at(words.value(1)));
    }

    void setMicrophone(const QString& status) {
        static const std::map<QString, MicrophoneStatus> statuses{
            {QStringLiteral("authorised"), MicrophoneStatus::Authorised},
            {QStringLiteral("asked"), MicrophoneStatus::NotAsked},
            {QStringLiteral("denied"), MicrophoneStatus::Denied}};
        menu_.setMicrophone(statuses.at(status));
    }

    void setUpdate(const QString& version) {
        menu_.setUpdate(version == QStringLiteral("none") ? std::nullopt : std::optional(version));
    }

    void tellLines() {
        for (QAction* line : menu_.menu().actions()) {
            if (!menu_.menu().isVisible() || !line->isVisible() || line->isSeparator()) continue;
            const QPoint middle = menu_.menu().mapToGlobal(menu_.menu().actionGeometry(line).center());
            say(QStringLiteral("%1 %2 %3").arg(middle.x()).arg(middle.y()).arg(line->text()));
        }
    }

    float level_ = 0;
    int frames_ = 0;
    bool restate_ = false;
    StatusMenu menu_{actions()};
    DictationOverlay overlay_;
    const std::map<QString, std::function<void(const QString&)>> verbs_{
        {QStringLiteral("title"), [this](const QString& text) { menu_.setTitle(text); }},
        {QStringLiteral("icon"), [this](const QString& rest) { setIcon(rest); }},
        {QStringLiteral("mic"), [this](const QString& status) { setMicrophone(status); }},
        {QStringLiteral("trusted"),
         [this](const QString& yes) { menu_.setAccessibility(yes == QStringLiteral("yes")); }},
        {QStringLiteral("update"), [this](const QString& version) { setUpdate(version); }},
        {QStringLiteral("show"), [this](const QString&) { overlay_.show(); }},
        {QStringLiteral("rest"), [this](const QString&) { overlay_.rest(); }},
        {QStringLiteral("hide"), [this](const QString&) { overlay_.hide(); }},
        {QStringLiteral("level"), [this](const QString& level) { level_ = level.toFloat(); }},
        {QStringLiteral("frames"), [this](const QString&) { say(QString::number(frames_)); }},
        {QStringLiteral("lines"), [this](const QString&) { tellLines(); }},
        {QStringLiteral("restate"), [this](const QString&) { restate_ = true; }},
        {QStringLiteral("popup"), [this](const QString&) { menu_.menu().popup(QCursor::pos()); }},
    };
};

/// Reads what there is without waiting for more: the event loop goes on meanwhile.
class Commands {
  public:
    explicit Commands(Indicators& indicators)
        : indicators_(indicators), notifier_(STDIN_FILENO, QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, [this] { read(); });
    }

  private:
    void read() {
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count <= 0) {
            QCoreApplication::quit();
            return;
        }
        pending_.append(buffer.data(), static_cast<std::size_t>(count));
        for (auto end = pending_.find('\n'); end != std::string::npos; end = pending_.find('\n')) {
            const QString line = QString::fromStdString(pending_.substr(0, end));
            pending_.erase(0, end + 1);
            indicators_.perform(line);
        }
    }

    Indicators& indicators_;
    QSocketNotifier notifier_;
    std::string pending_;
};

}  // namespace
}  // namespace parlivo

int main(int argc, char** argv) {
    parlivo::Platform::install(parlivo::makePlatform());
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    parlivo::installSigns();
    int result = 0;
    {
        parlivo::Indicators indicators;
        const parlivo::Commands commands(indicators);
        parlivo::say(QStringLiteral("ready"));
        result = QApplication::exec();
    }
    parlivo::Platform::install(nullptr);
    return result;
}
