// SPDX-License-Identifier: MIT
#include "input/Injector.h"
#include "platform/macos/MacTest.h"
#include "platform/macos/fakes/FakeQuartz.h"
#include "platform/macos/input/QuartzKeyboardSynthesizer.h"

namespace parlivo {
namespace {

using namespace std::chrono_literals;

const QString source = QStringLiteral("source 0");            // the combined session's state
const QString people = QStringLiteral("🧑‍🤝‍🧑");  // five code points, eight UTF-16 units

/// Key down and key up at the HID tap.
QStringList stroke(int key, int flags, const QString& text = {}) {
    const QString what = QStringLiteral(" %1 flags %2%3 at 0").arg(key).arg(flags).arg(text);
    return {QStringLiteral("down") + what, QStringLiteral("up") + what};
}

QStringList character(const QString& text) {
    return stroke(0, 0, QStringLiteral(" «%1» of %2").arg(text).arg(text.size()));
}

class QuartzKeyboardTest : public MacTest {
  protected:
    QuartzKeyboardTest() { platform.keyboard().real = &keyboard; }
    ~QuartzKeyboardTest() override { mac::quartz() = {}; }

    static QStringList typed(const QString& text) {
        Injector::typeText(text);
        return mac::takeCalls();
    }

    QuartzKeyboardSynthesizer keyboard;
};

TEST_F(QuartzKeyboardTest, TypesLettersReturnTabAndEmojiAtEachSpeed) {
    const QString text = QStringLiteral("è\n\t") + people;
    ASSERT_EQ(people.size(), 8);
    const QStringList expected = QStringList(source) + character(QStringLiteral("è")) + stroke(36, 0) +
                                 stroke(48, 0) + character(people);
    struct Row {
        const char* speed;
        Clock::Duration pauses;
    };
    for (const Row& row :
         {Row{"natural", 4 * 12'000us}, Row{"fast", 4 * 3'500us}, Row{"instant", 4 * 3'500us}}) {
        store(QStringLiteral("typingSpeed"), QString::fromLatin1(row.speed));
        const auto start = Clock::now();
        EXPECT_EQ(typed(text), expected) << row.speed;
        EXPECT_GE(Clock::now() - start, row.pauses) << row.speed;
        EXPECT_EQ(mac::living(), 0) << "events and source are released";
    }
}

TEST_F(QuartzKeyboardTest, ACarriageReturnAloneIsReturnAndWithALineFeedIsText) {
    EXPECT_EQ(typed(QStringLiteral("\r")), QStringList(source) + stroke(36, 0));
    EXPECT_EQ(typed(QStringLiteral("\r\n")), QStringList(source) + character(QStringLiteral("\r\n")));
}

TEST_F(QuartzKeyboardTest, ACombiningAccentTravelsWithItsLetter) {
    EXPECT_EQ(typed(QStringLiteral("e\u0301x")),
              QStringList(source) + character(QStringLiteral("e\u0301")) + character(QStringLiteral("x")));
}

TEST_F(QuartzKeyboardTest, AnEventThatCannotBeMadeIsSkippedAndItsPauseTaken) {
    mac::quartz().eventsToRefuse = 1;
    const auto start = Clock::now();
    EXPECT_EQ(typed(QStringLiteral("ab")),
              QStringList(source) + character(QStringLiteral("a")).mid(1) + character(QStringLiteral("b")));
    EXPECT_GE(Clock::now() - start, 2 * 3'500us);
    mac::quartz().eventsToRefuse = 2;
    EXPECT_EQ(typed(QStringLiteral("\n")), QStringList(source));
}

TEST_F(QuartzKeyboardTest, TypesWithoutASourceToo) {
    mac::quartz().sources = false;
    EXPECT_EQ(typed(QStringLiteral("a")), QStringList(source) + character(QStringLiteral("a")));
}

TEST_F(QuartzKeyboardTest, PastesByCommandV) {
    Clock::setScale(0.02);
    Injector::paste(QStringLiteral("testo"));
    EXPECT_EQ(mac::takeCalls(), QStringList(source) + stroke(9, 0x100000));
    EXPECT_EQ(mac::living(), 0);
}

}  // namespace
}  // namespace parlivo
