// SPDX-License-Identifier: MIT
#include "support/AskedWaits.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "support/Errors.h"
#include "support/MainQueue.h"
#include "support/SerialQueue.h"
#include "support/Text.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <thread>

namespace parlivo {
namespace {

using namespace std::string_literals;

using std::chrono::hours;
using std::chrono::milliseconds;

/// Runs the main thread's events until `done`.
void spin(const std::function<bool()>& done) {
    const auto limit = Clock::now() + std::chrono::seconds(10);
    while (!done() && Clock::now() < limit)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    ASSERT_TRUE(done());
}

TEST(TextTest, CountsWhatAUserPerceives) {
    EXPECT_EQ(Text::countCharacters({}), 0);
    EXPECT_EQ(Text::countCharacters(u"perché"), 6);
    EXPECT_EQ(Text::countCharacters(u"perche\u0301"), 6) << "combining accent";
    EXPECT_EQ(Text::countCharacters(u"a\r\nb"), 3) << "CR LF is one";
    EXPECT_EQ(Text::countCharacters(u"👨‍👩‍👧‍👦"), 1) << "family joined by ZWJ";
    EXPECT_EQ(Text::countCharacters(u"🇮🇹🇫🇷"), 2) << "flags";
    EXPECT_EQ(Text::countCharacters(u"👍🏽"), 1) << "skin tone";
    EXPECT_EQ(Text::countCharacters(u"❤️"), 1) << "variation selector";
}

TEST(TextTest, CutsBetweenCharactersOnly) {
    EXPECT_EQ(Text::firstCharacters(QStringLiteral("👨‍👩‍👧‍👦bc"), 2),
              QStringLiteral("👨‍👩‍👧‍👦b"));
    EXPECT_EQ(Text::firstCharacters(QStringLiteral("ab"), 80), QStringLiteral("ab"));
    EXPECT_EQ(Text::firstCharacters(QStringLiteral("ab"), 0), QString());
}

TEST(TextTest, SplittingLosesNothingWhateverTheText) {
    std::mt19937 random(7);
    const std::u32string alphabet =
        U"a\u0301\u200d👍🏽👨👩🇮🇹\r\n\t가각ᄀ\ufe0f❤\U000e0067\u0000\ud7ff"s;
    for (int round = 0; round < 500; ++round) {
        QString text;
        for (int i = 0; i < 40; ++i) text += QString::fromUcs4(&alphabet[random() % alphabet.size()], 1);
        if (round % 5 == 0) text += QChar(0xd83d);  // a surrogate on its own
        QString joined;
        qsizetype count = 0;
        Text::forEachCharacter(text, [&](QStringView character) {
            EXPECT_FALSE(character.isEmpty());
            joined += character;
            ++count;
            return true;
        });
        ASSERT_EQ(joined, text);
        ASSERT_EQ(count, Text::countCharacters(text));
        ASSERT_EQ(Text::countCharacters(Text::firstCharacters(text, count / 2)), count / 2);
    }
}

TEST(TextTest, TrimsBlanksAndLeavesLineEnds) {
    EXPECT_EQ(Text::trimmedBlanks(QStringLiteral(" \t\u00a0a b \u3000")), QStringLiteral("a b"));
    EXPECT_EQ(Text::trimmedBlanks(QStringLiteral(" \na\n ")), QStringLiteral("\na\n"));
    EXPECT_EQ(Text::trimmedBlanks(QStringLiteral(" \t ")), QString());
}

TEST(ErrorTest, CarriesDomainCodeAndText) {
    const Error own(ErrorCode::WhisperReplyInvalid, QStringLiteral("risposta non valida"));
    EXPECT_TRUE(isError(own, ErrorCode::WhisperReplyInvalid));
    EXPECT_FALSE(isError(own, ErrorCode::WhisperNotResponding));
    EXPECT_STREQ(own.what(), "risposta non valida");
    const Error system = Error::system(ENOENT, QStringLiteral("/x"));
    EXPECT_EQ(system.domain(), QStringLiteral("POSIX"));
    EXPECT_EQ(system.code(), ENOENT);
    EXPECT_FALSE(isError(system, ErrorCode::ConversionFailed)) << "the same number in another domain";
}

TEST(ErrorTest, ReasonsAreItalianWhateverTheSystemSpeaks) {
    const auto reason = [](int code) {
        return Error::system(code, QStringLiteral("/x")).localizedDescription();
    };
    EXPECT_EQ(reason(ENOSPC), QStringLiteral("/x: spazio su disco esaurito"));
    EXPECT_EQ(reason(EEXIST), QStringLiteral("/x: esiste già"));
    EXPECT_EQ(reason(EMFILE), QStringLiteral("/x: troppi file aperti"));
    EXPECT_EQ(reason(EDOM), QStringLiteral("/x: errore di sistema %1").arg(EDOM)) << "one of the rare";
    EXPECT_EQ(reason(99999), QStringLiteral("/x: errore di sistema 99999"));
}

TEST(ErrorTest, AFilesFailureIsItalianAndNamesTheFile) {
    QFile missing(QStringLiteral("/nonexistent/file"));
    ASSERT_FALSE(missing.open(QIODevice::ReadOnly));
    const Error error = Error::file(missing);
    EXPECT_EQ(error.domain(), QStringLiteral("File"));
    EXPECT_EQ(error.code(), QFileDevice::OpenError);
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("/nonexistent/file: impossibile aprire il file"));
    QFile full(QStringLiteral("/dev/full"));
    ASSERT_TRUE(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    EXPECT_EQ(full.write("x"), -1);
    EXPECT_EQ(Error::file(full).localizedDescription(),
              QStringLiteral("/dev/full: spazio su disco o memoria esauriti"));
}

TEST(SerialQueueTest, RunsJobsInOrderOnOneThread) {
    SerialQueue queue(QStringLiteral("prova"));
    std::vector<int> order;
    std::thread::id runner;
    for (int i = 0; i < 1000; ++i) {
        queue.async([&, i] {
            order.push_back(i);
            runner = std::this_thread::get_id();
        });
    }
    queue.waitUntilDone();
    ASSERT_EQ(order.size(), 1000U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_NE(runner, std::this_thread::get_id());
}

TEST(SerialQueueTest, AFinishingQueueEndsOnlyWhenAllHasRun) {
    int ran = 0;
    {
        SerialQueue queue(QStringLiteral("prova"), SerialQueue::AtEnd::FinishWaiting);
        for (int i = 0; i < 100; ++i) queue.async([&ran] { ++ran; });
    }
    EXPECT_EQ(ran, 100);
}

TEST(SerialQueueTest, AJobsVariablesAreDestroyedBeforeTheNextJobRuns) {
    SerialQueue queue(QStringLiteral("prova"));
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    bool gone = false;
    queue.async([held = std::move(held)] { ++*held; });
    queue.async([&] { gone = watched.expired(); });
    queue.waitUntilDone();
    EXPECT_TRUE(gone);
}

TEST(MainQueueTest, JobsOfOtherThreadsRunOnTheMainThread) {
    bool onMain = false;
    bool done = false;
    std::thread([&] {
        MainQueue::async([&] {
            onMain = MainQueue::isCurrent();
            done = true;
        });
    }).join();
    EXPECT_FALSE(done) << "never at once";
    spin([&] { return done; });
    EXPECT_TRUE(onMain);
}

TEST(MainQueueTest, AJobRunsBeforeThePaintingThatWaits) {
    struct Window : QObject {
        bool event(QEvent* event) override {
            if (event->type() == QEvent::UpdateRequest) painted = true;
            return QObject::event(event);
        }
        bool painted = false;
    } window;
    QCoreApplication::postEvent(&window, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
    QCoreApplication::postEvent(&window, new QEvent(QEvent::UpdateRequest));
    std::optional<bool> paintedBefore;
    std::thread([&] { MainQueue::async([&] { paintedBefore = window.painted; }); }).join();
    QCoreApplication::processEvents();
    EXPECT_EQ(paintedBefore, false);
    EXPECT_TRUE(window.painted);
}

TEST(MainQueueTest, JobsOfADestroyedOwnerDoNothing) {
    int ran = 0;
    auto owner = std::make_unique<Lifetime>();
    MainQueue::async(owner->token(), [&] { ran += 1; });
    MainQueue::after(milliseconds(1), owner->token(), [&] { ran += 10; });
    owner.reset();
    bool later = false;
    const Lifetime alive;
    MainQueue::after(milliseconds(30), alive.token(), [&] { later = true; });
    spin([&] { return later; });
    EXPECT_EQ(ran, 0);
}

TEST(MainQueueTest, SyncWaitsForTheJob) {
    std::atomic<bool> ran = false;
    std::atomic<bool> returned = false;
    std::thread caller([&] { returned = MainQueue::sync([&] { ran = MainQueue::isCurrent(); }); });
    spin([&] { return returned.load(); });
    caller.join();
    EXPECT_TRUE(ran);
}

TEST(MainQueueTest, TheEndOfTheProgramReleasesAWaitingThread) {
    std::atomic<int> ran = 0;
    std::atomic<int> result = -1;
    std::thread caller([&] { result = MainQueue::sync([&] { ++ran; }) ? 1 : 0; });
    Clock::interruptAll();
    caller.join();  // with the main thread blocked here, only the interruption can release it
    EXPECT_EQ(result, 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(ran, 0) << "an abandoned job must not run later: its variables are gone";
    Clock::resume();
}

TEST(ClockTest, AnInterruptionEndsEveryWaitAtOnce) {
    std::atomic<bool> whole = true;
    std::thread sleeper([&] { whole = Clock::sleepFor(hours(1)); });
    Clock::interruptAll();
    sleeper.join();
    EXPECT_FALSE(whole);
    EXPECT_FALSE(Clock::sleepFor(hours(1))) << "and those that come later";
    Clock::resume();
    EXPECT_TRUE(Clock::sleepFor(milliseconds(1)));
}

TEST(ClockTest, AStatedTimeIsScaled) {
    Clock::setScale(0.001);
    EXPECT_EQ(Clock::scaled(milliseconds(125'000)), milliseconds(125));
    EXPECT_TRUE(Clock::sleepFor(milliseconds(1000)));
    Clock::setScale(1);
    EXPECT_EQ(Clock::scaled(milliseconds(125'000)), milliseconds(125'000));
}

TEST(ClockTest, ItsObserverHearsWhatIsAskedFor) {
    Clock::setScale(0.001);
    {
        const AskedWaits asked;
        Clock::sleepFor(milliseconds(1000));
        const Clock::Deadline deadline(milliseconds(125'000));
        EXPECT_EQ(asked.all(), (std::vector{milliseconds(1000), milliseconds(125'000)}))
            << "as it is stated, not as it is waited for";
    }
    Clock::sleepFor(milliseconds(1));  // nobody listens any longer
    Clock::setScale(1);
}

TEST(ClockTest, ASignalIsSeenOrTimesOut) {
    Clock::Signal signal;
    EXPECT_FALSE(signal.waitUntil(Clock::now() + milliseconds(1)));
    std::thread raiser([&] { signal.raise(); });
    EXPECT_TRUE(signal.wait());
    raiser.join();
    EXPECT_TRUE(signal.waitUntil(Clock::now())) << "raised stays raised";
}

}  // namespace
}  // namespace parlivo
