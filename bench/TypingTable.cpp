// SPDX-License-Identifier: MIT

/// Counts what goes wrong while texts are typed into real applications, beside `xdotool type`, and measures
/// the pace. Prints Markdown; the exit status is 0 if Parlivo made no error, kept its pace within 2 % and
/// left the keyboard map as it was.
///
/// usage: typing_table [OPTION]...     see --help

#include "Alignment.h"
#include "Typists.h"
#include "input/Injector.h"
#include "platform/linux/x11/X11HotKeyService.h"
#include "support/Keyboard.h"
#include "support/KeyboardMap.h"
#include "support/Pipeline.h"
#include "support/Receiver.h"
#include "support/Text.h"
#include "support/TypingPlatform.h"

#include <QApplication>
#include <QCommandLineParser>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;
using namespace desktop;

enum class Condition { Plain, CapsLock, HeldLate };

/// Together they need no more characters than a keyboard of any of the layouts can be given: all are typed,
/// none are pasted.
const std::array sentences{
    QStringLiteral("Perché la città è così bella? Non c’è dubbio: «l’università» e il caffè.\n"),
    QStringLiteral("Disse: “Andiamo — subito!” e pagò 12,50 € (più o meno); poi… ‘forse’. "),
    QStringLiteral("\tÈ l’ora – lunedì, 3 marzo – di ciò che già fu: virtù, bontà, Così sia!\n"),
    QStringLiteral(
        "Il file /tmp/prova_1.txt pesa 45% di meno & costa $3: [a] {b} <c> ~ ^ _ = + | \\ @ #.\r\n"),
    QStringLiteral("HELLO hello 112233 AAbbCC, \"virgolette\" e 'apici' `tick`; ÀÈ àèéìòù. "),
    QStringLiteral("Evviva 👨‍👩‍👧‍👦 👍🏽 ❤️! "),
};

/// The sentences in an order that is the same each time, cut to so many characters.
QString textOf(qsizetype characters, unsigned seed) {
    std::mt19937 random(seed);
    QString text;
    while (Text::countCharacters(text) < characters) text += sentences.at(random() % sentences.size());
    return Text::firstCharacters(text, characters - 1) + QLatin1Char('.');
}

std::u32string codePoints(const QString& text) {
    const auto points = text.toUcs4();
    return {points.begin(), points.end()};
}

struct Result {
    Differences differences;
    qsizetype characters = 0;
    double seconds = 0;

    Result& operator+=(const Result& other) {
        differences += other.differences;
        characters += other.characters;
        seconds += other.seconds;
        return *this;
    }
};

/// An application to type into. On a desk where dozens come and go, one that does not come up is given up and
/// started anew.
std::unique_ptr<Receiver> openReceiver(Receiver::Kind kind) {
    constexpr int attempts = 3;
    for (int attempt = 1;; ++attempt) {
        try {
            return std::make_unique<Receiver>(kind);
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "typing_table: %s\n", failure.what());
            if (attempt == attempts) throw;
        }
    }
}

/// Until the receiver holds what was meant, or nothing more comes.
void settle(const Receiver& receiver, const QString& meant) {
    QString last;
    while (!receiver.waitForText(meant, 1500ms)) {
        if (receiver.text() == last) return;
        last = receiver.text();
    }
}

/// A hot key as the user's hands know it.
struct HotKey {
    HotKeyModifiers modifiers = 0;
    xcb_keycode_t modifierKey = 0;
};

/// A user, who leaves Caps Lock on or is slow to let go of the modifier after dictating.
class User {
  public:
    explicit User(Condition condition) : condition_(condition) {
        if (condition_ == Condition::CapsLock) keyboard_.setLocks(XCB_MOD_MASK_LOCK);
    }

    /// Makes the typist start.
    void setOff(Typist& typist, const QString& text) {
        if (condition_ != Condition::HeldLate) {
            typist.start(text);
            return;
        }
        constexpr std::array hotKeys{HotKey{HotKeyModifier::option, Key::leftAlt},
                                     HotKey{HotKeyModifier::control, Key::leftControl}};
        dictate(hotKeys.at(turn_++ % hotKeys.size()), typist, text);
    }

  private:
    void dictate(const HotKey& hotKey, Typist& typist, const QString& text) {
        constexpr KeyCode space = 49;
        const auto registration = hotKeys_.registerHotKey(space, hotKey.modifiers, {});
        keyboard_.press(hotKey.modifierKey);
        keyboard_.press(Key::space);
        letPass(400ms);
        keyboard_.release(Key::space);
        typist.start(text);
        letPass(300ms);
        keyboard_.release(hotKey.modifierKey);
    }

    Condition condition_;
    Keyboard keyboard_;
    X11HotKeyService hotKeys_;
    std::size_t turn_ = 0;
};

Result typeAll(Typist& typist, Receiver::Kind kind, Condition condition, const std::vector<QString>& texts) {
    const auto receiver = openReceiver(kind);
    User user(condition);
    Result result;
    QString meant;
    for (const QString& text : texts) {
        const auto before = Clock::now();
        user.setOff(typist, text);
        waitFor([&] { return typist.isDone(); }, 120s);
        result.seconds += std::chrono::duration<double>(Clock::now() - before).count();
        result.characters += Text::countCharacters(text);
        meant += asReceived(text);
        settle(*receiver, meant);
    }
    result.differences = differences(codePoints(meant), codePoints(receiver->text()));
    return result;
}

std::string cellsOf(const Result& result) {
    if (result.characters == 0) return " | ";
    const auto& d = result.differences;
    return std::to_string(d.wrong) + " / " + std::to_string(d.lost) + " / " + std::to_string(d.doubled) +
           " | " + std::to_string(static_cast<long>(static_cast<double>(result.characters) / result.seconds));
}

const char* nameOf(Condition condition) {
    switch (condition) {
        case Condition::Plain:
            return "plain";
        case Condition::CapsLock:
            return "Caps Lock on";
        case Condition::HeldLate:
            return "hot key's modifier up 0.3 s late";
    }
    return "";
}

/// What the table is about.
struct Scope {
    qsizetype charactersPerCell = 1700;
    QStringList receivers;  ///< by name; all for none
    QStringList layouts{QStringLiteral("us"), QStringLiteral("it"), QStringLiteral("de")};
    bool againstXdotool = true;

    bool covers(Receiver::Kind kind) const {
        return receivers.isEmpty() ||
               receivers.contains(QString::fromStdString(desktop::nameOf(kind)), Qt::CaseInsensitive);
    }
};

/// Both typists, one after the other. Returns Parlivo's result and xdotool's.
std::array<Result, 2> compare(const Scope& scope, Receiver::Kind kind, const QString& layout,
                              Condition condition) {
    const qsizetype half = scope.charactersPerCell / 2;
    const std::vector texts{textOf(half, 1), textOf(half, 2)};
    std::array<Result, 2> results;
    {
        Keyboard::setLayout(layout.toLatin1());
        Parlivo parlivo;
        results[0] = typeAll(parlivo, kind, condition, texts);
    }
    if (!scope.againstXdotool) return results;
    Keyboard::setLayout(layout.toLatin1());
    Xdotool xdotool;
    results[1] = typeAll(xdotool, kind, condition, texts);
    return results;
}

/// The table, line by line as it comes about.
class Report {
  public:
    Report() {
        std::printf(
            "\n| receiver | layout | | characters | Parlivo: wrong / lost / doubled | a second | "
            "xdotool: wrong / lost / doubled | a second |\n|---|---|---|---:|---:|---:|---:|---:|\n");
    }

    void add(const std::string& cell, const std::array<Result, 2>& results) {
        print(cell, results);
        for (std::size_t i = 0; i < total_.size(); ++i) total_.at(i) += results.at(i);
    }

    /// Returns Parlivo's errors.
    std::size_t conclude() {
        print("**all** | |", total_);
        return total_[0].differences.sum();
    }

  private:
    static void print(const std::string& cell, const std::array<Result, 2>& results) {
        std::printf("| %s | %lld | %s | %s |\n", cell.c_str(), static_cast<long long>(results[0].characters),
                    cellsOf(results[0]).c_str(), cellsOf(results[1]).c_str());
        std::fflush(stdout);
    }

    std::array<Result, 2> total_;
};

/// Returns Parlivo's errors.
std::size_t printTable(const Scope& scope) {
    Report report;
    for (const auto kind :
         {Receiver::Kind::Xterm, Receiver::Kind::Gtk3, Receiver::Kind::Qt, Receiver::Kind::Chromium}) {
        if (!scope.covers(kind)) continue;
        for (const QString& layout : scope.layouts) {
            for (const auto condition : {Condition::Plain, Condition::CapsLock, Condition::HeldLate}) {
                const std::string cell =
                    desktop::nameOf(kind) + " | " + layout.toStdString() + " | " + nameOf(condition);
                report.add(cell, compare(scope, kind, layout, condition));
            }
        }
    }
    return report.conclude();
}

/// How far from pause × characters, in per cent, the worst of several texts was.
double paceError(const char* speed, std::chrono::microseconds pause, qsizetype characters) {
    constexpr int rounds = 3;
    const auto receiver = openReceiver(Receiver::Kind::Xterm);
    Pipeline pipeline;
    Platform::current().userDefaults().setValue(QStringLiteral("typingSpeed"), QString::fromLatin1(speed));
    const QString text =
        textOf(characters, 3).remove(QStringLiteral("👨‍👩‍👧‍👦 👍🏽 ❤️"));
    const auto due = std::chrono::duration<double>(pause * Text::countCharacters(text));
    double worst = 0;
    for (int i = 0; i < rounds; ++i) {
        std::chrono::duration<double> taken{};
        pipeline.run([&] {
            const auto before = Clock::now();
            Injector::typeText(text);
            taken = Clock::now() - before;
        });
        worst = std::max(worst, 100 * std::abs(taken / due - 1));
    }
    return worst;
}

bool printPace() {
    constexpr double allowed = 2;
    Keyboard::setLayout("us");
    const TypingProgram program;
    Pipeline().run([] { Platform::current().keyboard().prepare(); });
    const double fast = paceError("fast", 3'500us, 1500);
    const double natural = paceError("natural", 12'000us, 300);
    std::printf("\n| pace | characters | target | worst of three |\n|---|---:|---:|---:|\n");
    std::printf("| fast, 3.5 ms a character | 1500 | within 2 %% | %.2f %% off |\n", fast);
    std::printf("| natural, 12 ms a character | 300 | within 2 %% | %.2f %% off |\n", natural);
    return fast <= allowed && natural <= allowed;
}

int run(const Scope& scope) {
    Keyboard::setLayout("us");
    const QByteArray mapBefore = keyboardMap();
    const std::size_t errors = printTable(scope);
    const bool inPace = printPace();
    Keyboard::setLayout("us");
    const bool sameMap = !mapBefore.isEmpty() && keyboardMap() == mapBefore;
    std::printf("\nKeyboard map afterwards: %s\n", sameMap ? "as before, to the last byte" : "CHANGED");
    return errors == 0 && inPace && sameMap ? 0 : 1;
}

Scope scopeOf(const QStringList& arguments) {
    Scope scope;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Counts what goes wrong while texts are typed."));
    parser.addHelpOption();
    const QCommandLineOption characters(QStringLiteral("characters"),
                                        QStringLiteral("In each cell of the table (default 1700)."),
                                        QStringLiteral("N"), QString::number(scope.charactersPerCell));
    const QCommandLineOption only(QStringLiteral("only"),
                                  QStringLiteral("Only this receiver: Xterm, Gtk3, Qt or Chromium."),
                                  QStringLiteral("RECEIVER"));
    const QCommandLineOption layout(QStringLiteral("layout"), QStringLiteral("Only this layout."),
                                    QStringLiteral("LAYOUT"));
    const QCommandLineOption alone(QStringLiteral("alone"), QStringLiteral("Leave xdotool out."));
    parser.addOptions({characters, only, layout, alone});
    parser.process(arguments);
    scope.charactersPerCell = parser.value(characters).toLongLong();
    scope.receivers = parser.values(only);
    if (parser.isSet(layout)) scope.layouts = parser.values(layout);
    scope.againstXdotool = !parser.isSet(alone);
    return scope;
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    try {
        return parlivo::bench::run(parlivo::bench::scopeOf(QApplication::arguments()));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "typing_table: %s\n", failure.what());
        return 2;
    }
}
