// SPDX-License-Identifier: MIT

/// Measures how long a user waits from the key's release to the first typed character with engines and models
/// of the sizes that users have, and which share of it is the program's; beside it the same put together by
/// hand.
///
/// usage: real_size_bench BY-HAND ENGINES RECOGNISER CLEANER SECONDS [ROUNDS]

#include "BenchMain.h"
#include "Table.h"
#include "desktop/dictation/Home.h"
#include "desktop/dictation/Program.h"
#include "desktop/dictation/Sound.h"
#include "dictation/ByHand.h"
#include "dictation/EngineRelay.h"
#include "dictation/KeyListener.h"
#include "dictation/WithParlivo.h"
#include "support/Receiver.h"
#include "support/Waiting.h"

#include <array>
#include <cstdio>
#include <span>
#include <string>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;
using namespace desktop;

constexpr auto dictationLimit = 10min;

/// What one way to dictate took, in seconds; the share in per cent.
struct Waits {
    Samples whole;
    Samples engines;
    Samples share;
};

class Bench {
  public:
    Bench(EngineRelay& recogniser, EngineRelay& cleaner)
        : engines_{&recogniser, &cleaner}, receiver_(Receiver::Kind::Xterm) {}

    void dictate(DictationMethod& way, std::chrono::milliseconds hold, Waits& waits) {
        way.press();
        letPass(hold);
        const auto released = SteadyClock::now();
        way.release();
        require(waitFor([&] { return way.isOver(); }, dictationLimit), "the dictation does not end");
        SteadyClock::duration engines{};
        auto answered = released;
        for (const EngineRelay* engine : engines_) {
            for (const auto& exchange : engine->since(released)) {
                engines += exchange.answered - exchange.arrived;
                answered = std::max(answered, exchange.answered);
            }
        }
        require(answered > released, "no engine was asked");
        std::vector<SteadyClock::time_point> keys;
        require(waitFor([&] { return !(keys = listener_.pressesSince(answered)).empty(); }),
                "nothing was typed");
        const double whole = milliseconds(keys.front() - released);
        waits.whole.add(whole / 1'000);
        waits.engines.add(milliseconds(engines) / 1'000);
        waits.share.add(100 * (whole - milliseconds(engines)) / whole);
    }

  private:
    const std::array<EngineRelay*, 2> engines_;
    Receiver receiver_;
    KeyListener listener_;
};

void print(Table& table, const std::string& what, const Waits& ours, const Waits& byHand) {
    table.row(what + "key-up to the first key", "s", ours.whole, {}, byHand.whole);
    table.row(what + "of this the engines", "s", ours.engines, {}, byHand.engines);
    table.row(what + "share of the wait that is not the engines'", "%", ours.share, 1, byHand.share);
}

int run(const std::vector<QString>& arguments, std::chrono::seconds sound, int rounds) {
    const QString engines = arguments.at(1);
    separateSpeakerFromMicrophone();
    home::settle();
    const BundleCopy bundle;  // without engines: the program takes those that answer
    EngineRelay recogniser(
        {engines + QStringLiteral("/whisper-server"),
         {QStringLiteral("-m"), arguments.at(2), QStringLiteral("-bs"), QStringLiteral("5")},
         8765,
         "/",
         "/inference"});
    EngineRelay cleaner(
        {engines + QStringLiteral("/llama-server"),
         {QStringLiteral("-m"), arguments.at(3), QStringLiteral("-c"), QStringLiteral("4096")},
         8766,
         "/health",
         "/v1/chat/completions"});
    Bench bench(recogniser, cleaner);
    const std::string length = std::to_string(sound.count()) + " s of sound";
    Table table("From the key's release to the text, " + length, "by hand");
    Program program(bundle.path());
    require(program.waitUntilUp(), "the program does not come up");
    WithParlivo parlivo(program);
    ByHand byHand(arguments.at(0), 7ms);
    Waits ours;
    Waits theirs;
    for (int round = 0; round < rounds; ++round) {
        bench.dictate(parlivo, sound, ours);
        bench.dictate(byHand, sound, theirs);
    }
    print(table, "recognised: ", ours, theirs);
    home::set(QStringLiteral("cleanupLevel"), QStringLiteral("medium"));
    Waits cleaned;
    for (int round = 0; round < rounds; ++round) bench.dictate(parlivo, sound, cleaned);
    print(table, "recognised and cleaned: ", cleaned, Waits());
    return table.status();
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    using namespace parlivo::bench;
    return runBenchmark(argc, argv, [](std::span<char*> arguments) {
        if (arguments.size() < 6) {
            std::fputs("usage: real_size_bench BY-HAND ENGINES RECOGNISER CLEANER SECONDS [ROUNDS]\n",
                       stderr);
            return 2;
        }
        std::vector<QString> words;
        for (char* word : arguments.subspan(1, 4)) words.push_back(QString::fromLocal8Bit(word));
        return run(words, std::chrono::seconds(argument(arguments, 5, 3)), argument(arguments, 6, 3));
    });
}
