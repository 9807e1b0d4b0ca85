// SPDX-License-Identifier: MIT

/// Measures the whole program from outside, on a desktop of its own: from the key to the recogniser and from
/// its answer to the keys, beside the same put together by hand from parecord, sox, curl and xdotool.
///
/// usage: dictation_bench BY-HAND [ROUNDS [LONG-ROUNDS]]     BY-HAND is the script that does it by hand

#include "BenchMain.h"
#include "Table.h"
#include "desktop/dictation/Home.h"
#include "desktop/dictation/Program.h"
#include "desktop/dictation/Sound.h"
#include "dictation/ByHand.h"
#include "dictation/StartAndIdle.h"
#include "dictation/Testbed.h"
#include "dictation/WithParlivo.h"
#include "support/Keyboard.h"
#include "support/Waiting.h"

#include <cstdio>
#include <span>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;
using namespace desktop;

const QString sentence = QStringLiteral("oggi il tempo resta bello, domani forse piove.");

QString textOf(qsizetype characters) {
    const QString prose = (sentence + QLatin1Char(' ')).repeated(characters / sentence.size());
    return prose.left(characters - 1) + QLatin1Char('.');
}

/// What a row is made of, for both contestants.
struct Both {
    Samples ours;
    Samples theirs;
};

struct Length {
    std::chrono::seconds recording;
    int rounds;
    double targetToRequest;
};

void measureDictations(Table& table, Testbed& testbed, DictationMethod& parlivo, DictationMethod& byHand,
                       const Length& length) {
    Both toRequest;
    Both toFirstKey;
    Both unrecorded;
    const auto add = [&](const Dictation& dictation, Samples Both::*whose) {
        (toRequest.*whose).add(dictation.toRequest());
        (toFirstKey.*whose).add(dictation.toFirstKey());
        (unrecorded.*whose).add(dictation.unrecorded());
    };
    for (int round = 0; round < length.rounds; ++round) {
        add(testbed.dictate(parlivo, length.recording, sentence), &Both::ours);
        add(testbed.dictate(byHand, length.recording, sentence), &Both::theirs);
    }
    if (length.rounds == 0) return;
    const std::string what = "recording of " + std::to_string(length.recording.count()) + " s: ";
    const auto row = [&](const char* name, double target, const Both& both) {
        table.row(what + name, "ms", both.ours, target, both.theirs);
    };
    row("key-up to the request's last byte at the recogniser", length.targetToRequest, toRequest);
    row("recogniser's reply to the first key", 5, toFirstKey);
    row("key-down to the first captured sample", 60, unrecorded);
}

struct Pacing {
    const char* speed;
    SteadyClock::duration pause;
    qsizetype characters;
    std::chrono::milliseconds byHand;  ///< xdotool takes whole milliseconds
};

void measurePace(Table& table, Testbed& testbed, DictationMethod& parlivo, const QString& script,
                 const Pacing& pacing) {
    constexpr int rounds = 3;
    constexpr auto tap = 400ms;
    home::set(QStringLiteral("typingSpeed"), QString::fromLatin1(pacing.speed));
    ByHand byHand(script, pacing.byHand);
    const QString text = textOf(pacing.characters);
    Both both;
    for (int round = 0; round < rounds; ++round) {
        both.ours.add(testbed.dictate(parlivo, tap, text).paceError(pacing.pause));
        both.theirs.add(testbed.dictate(byHand, tap, text).paceError(pacing.byHand));
    }
    table.row(std::string("pace \"") + pacing.speed + "\", " + std::to_string(pacing.characters) +
                  " characters: off from pause × characters",
              "%", both.ours, 2, both.theirs);
}

void printNotes() {
    std::puts(
        "\nThe recogniser is a stand-in that answers at once. By hand: `bench/dictation/by-hand`. The first "
        "sample "
        "comes as late as the recording is shorter than the key was held: with Parlivo, whose recordings end "
        "when the key comes up, that is what the beginning lacks (below zero where the sound server had some "
        "sound ready); by hand it is what beginning and end lack together. Wake-ups are the context switches "
        "of all threads over 20 s (`/proc/PID/task/*/status`), memory is from `/proc/PID/smaps_rollup`.");
}

int run(const QString& script, int rounds, int longRounds) {
    separateSpeakerFromMicrophone();
    home::settle();
    // Without engines of its own: the program takes the one that answers, and nothing else keeps the machine
    // busy.
    const BundleCopy bundle;
    Testbed testbed;
    Table table("The whole program, from the key to the text", "by hand");
    measureStart(table, bundle.path(), rounds);
    Program program(bundle.path());
    require(program.waitUntilUp(), "the program does not come up");
    WithParlivo parlivo(program);
    ByHand byHand(script, 7ms);
    testbed.dictate(parlivo, 1s, sentence);  // once for what is done once only
    testbed.dictate(byHand, 1s, sentence);
    measureDictations(table, testbed, parlivo, byHand, {5s, rounds, 20});
    measureDictations(table, testbed, parlivo, byHand, {60s, longRounds, 20});
    measurePace(table, testbed, parlivo, script, {"fast", 3'500us, 1500, 4ms});
    measurePace(table, testbed, parlivo, script, {"natural", 12ms, 300, 12ms});
    measureIdle(table, program);
    printNotes();
    return table.status();
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    using namespace parlivo::bench;
    return runBenchmark(argc, argv, [](std::span<char*> arguments) {
        if (arguments.size() > 1)
            return run(QString::fromLocal8Bit(arguments[1]), argument(arguments, 2, 20),
                       argument(arguments, 3, 5));
        std::fputs("usage: dictation_bench BY-HAND [ROUNDS [LONG-ROUNDS]]\n", stderr);
        return 2;
    });
}
