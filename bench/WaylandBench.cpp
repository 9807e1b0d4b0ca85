// SPDX-License-Identifier: MIT

/// Measures, in a session of sway, what arrives of a text and how fast, by each of the two ways, beside
/// `wtype`; and what the program takes to start there and while idle. Prints Markdown; the exit status is 0
/// if no character went wrong and every target was met.
///
/// usage: wayland_bench [CHARACTERS [STARTS]]

#include "Alignment.h"
#include "BenchMain.h"
#include "Table.h"
#include "desktop/dictation/Home.h"
#include "desktop/dictation/Sound.h"
#include "desktop/hotkey/ShortcutsPortal.h"
#include "desktop/wayland/Hands.h"
#include "desktop/wayland/PortalSession.h"
#include "desktop/wayland/WaylandEnvironment.h"
#include "desktop/wayland/WaylandReceiver.h"
#include "dictation/StartAndIdle.h"
#include "dictation/Testbed.h"
#include "input/Injector.h"
#include "platform/linux/wayland/DataControlPasteboard.h"
#include "platform/linux/wayland/InputMethod.h"
#include "platform/linux/wayland/VirtualKeyboard.h"
#include "platform/linux/wayland/WaylandKeyboard.h"
#include "settings/Log.h"
#include "support/FakePlatform.h"
#include "support/Pipeline.h"
#include "support/Text.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;
using namespace desktop;
using Kind = WaylandReceiver::Kind;
using Seconds = std::chrono::duration<double>;

/// Text of many kinds, so many characters long.
QString textOf(qsizetype characters) {
    static const QString sample = QStringLiteral(
        "Perché la città è così bella? Non c’è dubbio: «l’università» e il caffè, più virtù, già giù.\n"
        "Disse: “Andiamo — subito!” e pagò 12,50 €; poi… ‘forse’. 👨‍👩‍👧‍👦 👍🏽 🇮🇹 ❤️ "
        "日本語のテキスト、漢字かな交じり文。 שלום עולם 한국어 ąćęłńóśźż\n");
    return Text::firstCharacters(sample.repeated(characters / Text::countCharacters(sample) + 1), characters);
}

/// The real keyboard and clipboard of the session, and fakes for all else.
class Typist {
  public:
    Typist() : connection_(wayland::WaylandConnection::open()) {
        keyboard_.emplace(wayland::InputMethod::make(*connection_),
                          std::make_unique<wayland::VirtualKeyboard>(*connection_));
        pasteboard_ = wayland::DataControlPasteboard::open();
        FakePlatform& platform = FakePlatform::install();
        platform.keyboard().real = &*keyboard_;
        platform.pasteboard().real = pasteboard_.get();
        platform.userDefaults().setValue(QStringLiteral("typingSpeed"), QStringLiteral("fast"));
        pipeline_.run([this] { keyboard_->prepare(); });
    }
    ~Typist() {
        Log::flush();
        FakePlatform::uninstall();
    }
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    /// Whether the focused window takes text without keys.
    bool canCommit() {
        return waitFor([this] { return keyboard_->makeSource({}) != nullptr; }, 3s);
    }
    void run(std::function<void()> job) {
        pipeline_.start(std::move(job));
        require(waitFor([this] { return pipeline_.isDone(); }, 300s), "the text does not come to its end");
    }

  private:
    Hands hands_;
    std::unique_ptr<wayland::WaylandConnection> connection_;
    std::optional<wayland::WaylandKeyboard> keyboard_;
    std::unique_ptr<wayland::DataControlPasteboard> pasteboard_;
    Pipeline pipeline_;
};

/// Types as fast as the receivers that read slowest bear, which is nearest to Parlivo's pace and not faster.
void typeByWtype(const QString& text) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("text"));
    QFile file(path);
    require(file.open(QIODevice::WriteOnly), "no temporary file");
    file.write(text.toUtf8());
    file.close();
    QProcess process;
    process.setStandardInputFile(path);
    process.start(QStringLiteral("wtype"), {QStringLiteral("-d"), QStringLiteral("4"), QStringLiteral("-")});
    require(process.waitForStarted(), "wtype does not start");
    waitFor([&] { return process.state() == QProcess::NotRunning; }, 300s);
}

std::u32string codePoints(const QString& text) {
    const auto points = text.toUcs4();
    return {points.begin(), points.end()};
}

struct Result {
    Differences differences;
    Seconds typed{};    ///< until the typist was done
    Seconds arrived{};  ///< until all of it stood in the window, or nothing more came
};

/// `prepare` is called once the window is there, and not measured.
Result measure(Kind kind, const QString& text, const std::function<void()>& prepare,
               const std::function<void()>& type) {
    const WaylandReceiver receiver(kind);
    prepare();
    const auto begin = Clock::now();
    type();
    Result result;
    result.typed = Clock::now() - begin;
    QString last;
    while (!waitFor([&] { return receiver.text() == text; }, 1500ms) && receiver.text() != last)
        last = receiver.text();
    result.arrived = Clock::now() - begin;
    if (receiver.text() != text)
        result.differences = differences(codePoints(text), codePoints(receiver.text()));
    return result;
}

std::string cellsOf(const Result& result, qsizetype characters, Seconds taken) {
    const auto& [wrong, lost, doubled] = result.differences;
    return std::to_string(wrong) + " / " + std::to_string(lost) + " / " + std::to_string(doubled) + " | " +
           std::to_string(static_cast<long>(static_cast<double>(characters) / taken.count()));
}

/// Returns Parlivo's errors.
std::size_t printInputMethod(qsizetype characters) {
    std::printf(
        "\n### Text by sway's input method, and by wtype's keys\n\n| receiver | characters | Parlivo: wrong / lost / "
        "doubled | a second | off from the pace | wtype: wrong / lost / doubled | a second |\n"
        "|---|---:|---:|---:|---:|---:|---:|\n");
    const QString text = textOf(characters);
    const Seconds due = 3'500us * characters;
    std::size_t errors = 0;
    for (const auto kind : {Kind::EchoingFoot, Kind::Foot, Kind::Gtk3, Kind::Gtk4, Kind::ChromiumText}) {
        Result ours;
        {
            Typist typist;
            ours = measure(
                kind, text, [&] { require(typist.canCommit(), "the window takes no text"); },
                [&] { typist.run([&] { Injector::typeText(text); }); });
        }
        const Hands hands;
        const Result theirs = measure(
            kind, text, [] {}, [&] { typeByWtype(text); });
        errors += ours.differences.sum();
        std::printf("| %s | %lld | %s | %.2f %% | %s |\n", nameOf(kind).c_str(),
                    static_cast<long long>(characters), cellsOf(ours, characters, ours.typed).c_str(),
                    100 * (ours.typed / due - 1), cellsOf(theirs, characters, theirs.typed).c_str());
        std::fflush(stdout);
    }
    return errors;
}

/// Returns Parlivo's errors.
std::size_t printPaste(qsizetype characters) {
    std::printf(
        "\n### Text pasted in sway\n\n| receiver | characters | wrong / lost / doubled | until it stands there |\n"
        "|---|---:|---:|---:|\n");
    const QString text = textOf(characters);
    std::size_t errors = 0;
    for (const auto kind : {Kind::Foot, Kind::Gtk3, Kind::Gtk4, Kind::Qt, Kind::Chromium}) {
        Typist typist;
        const Result result = measure(
            kind, text, [] {}, [&] { typist.run([&] { Injector::paste(text); }); });
        const auto& [wrong, lost, doubled] = result.differences;
        errors += result.differences.sum();
        std::printf("| %s | %lld | %zu / %zu / %zu | %.0f ms |\n", nameOf(kind).c_str(),
                    static_cast<long long>(characters), wrong, lost, doubled, 1'000 * result.arrived.count());
        std::fflush(stdout);
    }
    return errors;
}

int printProgram(int starts) {
    home::settle();
    const QProcessEnvironment environment = waylandEnvironment();
    const BundleCopy bundle;  // without engines
    Table table("The whole program in sway");
    measureStart(table, bundle.path(), starts, environment);
    {
        const PortalSession portals;
        ShortcutsPortal portal({.hangs = true});
        measureStart(table, bundle.path(), starts, portals.within(environment),
                     "start to ready beside a portal that hangs");
    }
    const Program program(bundle.path(), environment);
    require(program.waitUntilUp(), "the program does not come up");
    measureIdle(table, program);
    return table.status();
}

int run(qsizetype characters, int starts) {
    separateSpeakerFromMicrophone();
    const std::size_t errors = printInputMethod(characters) + printPaste(characters);
    const int status = printProgram(starts);
    std::puts(
        "\nThe pace is \"fast\", 3.5 ms a character; wtype gets 4 ms. A paste's time includes the 50 ms until every "
        "program sees the new clipboard, and up to 50 ms until the receiver tells what it holds. foot answers an "
        "input method only when its cursor moves. In EchoingFoot it does, as in a shell; in Foot nothing is echoed, so "
        "that each piece waits for a second, and carries as much more.");
    return errors == 0 ? status : 1;
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    using namespace parlivo::bench;
    return runBenchmark(argc, argv, [](std::span<char*> arguments) {
        return run(argument(arguments, 1, 10'000), argument(arguments, 2, 10));
    });
}
