// SPDX-License-Identifier: MIT

/// Shows where the time from the key's release to the recogniser's request goes, seen from outside the
/// program: by what happens to its files and by what the recogniser is asked.
///
/// usage: timeline_bench [ROUNDS [LONG-ROUNDS]]

#include "BenchMain.h"
#include "Table.h"
#include "desktop/dictation/Home.h"
#include "desktop/dictation/Program.h"
#include "desktop/dictation/Sound.h"
#include "dictation/FileEvents.h"
#include "dictation/Testbed.h"
#include "dictation/WithParlivo.h"
#include "support/Keyboard.h"

#include <QDir>

#include <cstdio>
#include <span>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;
using namespace desktop;

/// One row for each step; a step begins when the one before has ended.
class Timeline {
  public:
    Timeline(const FileEvents& files, Testbed& testbed) : files_(files), testbed_(testbed) {}

    void add(const Dictation& dictation) {
        const auto begin = dictation.released;
        const auto file = [&](FileEvents::Kind kind, const char* suffix) {
            const auto moment = files_.first(kind, suffix, begin);
            require(moment.has_value(), "a file's event is missing");
            return *moment;
        };
        const auto wav = file(FileEvents::Kind::Closed, ".wav");
        const auto capture = file(FileEvents::Kind::Closed, ".caf");
        const auto taken = file(FileEvents::Kind::Deleted, ".caf");
        const auto probes = testbed_.recogniser().probesSince(begin);
        const auto request = dictation.request.arrived;
        sound_.add(milliseconds(std::min(wav, capture) - begin));
        filesReady_.add(milliseconds(std::max(wav, capture) - begin));
        pipeline_.add(milliseconds(taken - begin));
        if (!probes.empty()) probe_.add(milliseconds(probes.back() - begin));
        probes_.add(static_cast<double>(probes.size()));
        request_.add(milliseconds(request - begin));
    }

    void print(const char* length) const {
        Table table(std::string("From the key's release to the request, recording of ") + length +
                    " (times since the release)");
        table.row("the first of both files is closed: key, main thread, last sound", "ms", sound_, {});
        table.row("capture file and WAV are closed", "ms", filesReady_, {});
        table.row("the pipeline has the WAV and has deleted the capture file", "ms", pipeline_, {});
        if (!probe_.empty()) table.row("the last probe is at the recogniser", "ms", probe_, {});
        table.row("number of probes", "", probes_, {});
        table.row("the request's last byte is at the recogniser", "ms", request_, 20);
    }

  private:
    const FileEvents& files_;
    Testbed& testbed_;
    Samples sound_;
    Samples filesReady_;
    Samples pipeline_;
    Samples probe_;
    Samples probes_;
    Samples request_;
};

int run(int rounds, int longRounds) {
    const QString sentence = QStringLiteral("oggi il tempo resta bello.");
    separateSpeakerFromMicrophone();
    home::settle();
    const BundleCopy bundle;
    Testbed testbed;
    const FileEvents files(QDir::tempPath());
    Program program(bundle.path());
    require(program.waitUntilUp(), "the program does not come up");
    WithParlivo parlivo(program);
    testbed.dictate(parlivo, 1s, sentence);  // once for what is done once only
    Timeline fives(files, testbed);
    for (int round = 0; round < rounds; ++round) fives.add(testbed.dictate(parlivo, 5s, sentence));
    fives.print("5 s");
    if (longRounds == 0) return 0;
    Timeline sixties(files, testbed);
    for (int round = 0; round < longRounds; ++round) sixties.add(testbed.dictate(parlivo, 60s, sentence));
    sixties.print("60 s");
    return 0;
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    using namespace parlivo::bench;
    return runBenchmark(argc, argv, [](std::span<char*> arguments) {
        return run(argument(arguments, 1, 20), argument(arguments, 2, 3));
    });
}
