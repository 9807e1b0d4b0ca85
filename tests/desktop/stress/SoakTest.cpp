// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/stress/Footprint.h"
#include "desktop/stress/StubEngines.h"
#include "platform/linux/x11/SelectionReader.h"
#include "support/SelectionOwner.h"

#include <QRegularExpression>

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <string_view>
#include <vector>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

enum class Cleanup { None, Medium };

/// One way of dictating.
struct Manner {
    const char* mode = "ptt";
    const char* speed = "fast";
    qsizetype length = 0;  ///< of the text, in characters
    Cleanup cleanup = Cleanup::None;
};

constexpr std::array manners{
    Manner{"ptt", "fast", 20},
    Manner{"toggle", "fast", 25},
    Manner{"ptt", "instant", 20},
    Manner{"ptt", "fast", 90, Cleanup::Medium},
    Manner{"toggle", "instant", 90, Cleanup::Medium},
    Manner{"ptt", "natural", 30},
    Manner{"ptt", "fast", 400, Cleanup::Medium},
    Manner{"toggle", "instant", 400},
    Manner{"ptt", "fast", 2'500},  // too long to be typed
    Manner{"ptt", "instant", 8'000, Cleanup::Medium},
    Manner{"toggle", "fast", 1'000},
    Manner{"ptt", "instant", 15},
};

/// A text like no other, with what is hard to type.
QString textOf(int number, qsizetype length) {
    const QString start = QStringLiteral("Dettato %1: ").arg(number);
    const QString sentence = QStringLiteral("perché no? Così è più bello, «davvero». ");
    QString text = (start + sentence.repeated(length / sentence.size() + 1)).left(length - 1);
    // The program takes blanks off the end.
    return text.replace(QRegularExpression(QStringLiteral(" $")), QStringLiteral("_")) + QLatin1Char('.');
}

int countFrom(const char* variable, int otherwise) {
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : otherwise;
}

/// Dictation after dictation in one life of the program. Nothing may be wrong, and nothing may pile up.
class Soak : public ProgramTest {
  protected:
    void start(const QString& bundle) {
        // Who has given an opinion is not asked for one in the middle.
        home::set(QStringLiteral("feedbackGiven"), true);
        program_ = std::make_unique<Program>(bundle);
        receiver_ = std::make_unique<Receiver>(Receiver::Kind::Qt);
        ASSERT_TRUE(program_->waitUntilUp());
        ASSERT_TRUE(Program::waitUntilServed(StubEngines::recogniserUrl));
        ASSERT_TRUE(Program::waitUntilServed(StubEngines::cleanupUrl));
    }

    void hold(const Manner& manner) {
        const bool toggle = std::string_view(manner.mode) == "toggle";
        press();
        if (toggle) release();
        ASSERT_TRUE(program_->waitForState(QStringLiteral("recording")))
            << qPrintable(program_->statusText());
        letPass(350ms);
        if (toggle) press();
        release();
    }

    /// The text is in the field, exactly; then the field is emptied for the next one.
    void expectArrived(const QString& text) {
        ASSERT_TRUE(receiver_->waitForText(text, engineTimeout))
            << "expected " << text.size() << ": " << qPrintable(text.left(30)) << "\n     got "
            << receiver_->text().size() << ": " << qPrintable(receiver_->text().left(30)) << '\n'
            << qPrintable(program_->statusText());
        ASSERT_TRUE(program_->waitForState(QStringLiteral("idle"))) << qPrintable(program_->state());
        keyboard_.press(Key::leftControl);
        keyboard_.tap(keyboard_.keyOf(XKB_KEY_l));
        keyboard_.release(Key::leftControl);
        ASSERT_TRUE(receiver_->waitForText({})) << qPrintable(receiver_->text());
    }

    /// When everything that a dictation leaves for later has been done.
    Footprint footprintAtRest() {
        expectNothingLeft(*program_);
        EXPECT_TRUE(waitFor([this] { return selections() == usersSelections_; }));
        return Footprint::of(program_->processId());
    }

    SelectionOwner ownerOf(PasteboardPlace place) const {
        return {place, SelectionOwner::Manner::Text, usersSelections_.value(place).toUtf8()};
    }
    static PasteboardTexts selections() {
        const QList places{PasteboardPlace::Clipboard, PasteboardPlace::PrimarySelection};
        return x11::SelectionReader::open()->read(places, defaultTimeout);
    }

    void expectNoGrowth(const Footprint& before) {
        // One connection to each engine and one to the sound server are kept or not.
        constexpr qint64 kept = 4;
        Footprint after;
        waitFor(
            [&] {
                after = footprintAtRest();
                return after.descriptors <= before.descriptors;
            },
            10s);
        EXPECT_LE(after.descriptors, before.descriptors + kept);
        std::cout << "  at the end:  " << after << std::endl;
        EXPECT_EQ(after.children, before.children);
        EXPECT_EQ(after.files, before.files);
        EXPECT_LE(static_cast<double>(after.resident), 1.05 * static_cast<double>(before.resident));
    }

    const PasteboardTexts usersSelections_{
        {PasteboardPlace::Clipboard, QStringLiteral("dell'utente")},
        {PasteboardPlace::PrimarySelection, QStringLiteral("selezionato dall'utente")}};
    SelectionOwner clipboard_ = ownerOf(PasteboardPlace::Clipboard);
    SelectionOwner primarySelection_ = ownerOf(PasteboardPlace::PrimarySelection);
    std::unique_ptr<Program> program_;
    std::unique_ptr<Receiver> receiver_;
};

class StubSoak : public Soak {
  protected:
    void dictate(int number, const Manner& manner) {
        const bool cleaned = manner.cleanup == Cleanup::Medium;
        home::set({{QStringLiteral("dictationMode"), QString::fromLatin1(manner.mode)},
                   {QStringLiteral("typingSpeed"), QString::fromLatin1(manner.speed)},
                   {QStringLiteral("cleanupLevel"), QString::fromLatin1(cleaned ? "medium" : "none")}});
        const QString text = textOf(number, manner.length);
        engines_.setTranscript(cleaned ? text.toLower() : text);
        engines_.clean(text);
        hold(manner);
        expectArrived(text);
    }

    StubEngines engines_;
};

TEST_F(StubSoak, EveryDictationSucceedsAndNoResourceGrows) {
    const int count = countFrom("PARLIVO_SOAK_STUB", 2 * static_cast<int>(manners.size()) + 1);
    // Everything has happened at least once.
    const int warm = std::max(static_cast<int>(manners.size()), count / 10);
    home::settle({{QStringLiteral("cleanupTier"), QStringLiteral("light")}});
    ASSERT_NO_FATAL_FAILURE(start(engines_.bundle()));
    Footprint before;
    for (int i = 0; i < count; ++i) {
        ASSERT_NO_FATAL_FAILURE(dictate(i, manners.at(static_cast<std::size_t>(i) % manners.size())));
        if (i + 1 == warm) before = footprintAtRest();
        if ((i + 1) % warm == 0) std::cout << "  after " << i + 1 << ": " << footprintAtRest() << std::endl;
    }
    expectNoGrowth(before);
}

class RealSoak : public Soak {
  protected:
    void dictate(const demo::Phrase& phrase) {
        ProgramTest::dictate(*program_, phrase);
        expectArrived(phrase.clean.value(QStringLiteral("medium")));
    }
};

TEST_F(RealSoak, EveryPhraseIsUnderstood) {
    const int count = countFrom("PARLIVO_SOAK_REAL", 2);
    home::settle({{QStringLiteral("cleanupTier"), QStringLiteral("light")},
                  {QStringLiteral("cleanupLevel"), QStringLiteral("medium")}});
    ASSERT_NO_FATAL_FAILURE(start(builtBundle()));
    auto phrases = demo::phrases();
    std::erase_if(phrases, [](const auto& phrase) { return phrase.language != QLatin1String("it"); });
    const int warm = std::max(1, count / 10);
    Footprint before;
    for (int i = 0; i < count; ++i) {
        // A step that meets short phrases and long ones.
        ASSERT_NO_FATAL_FAILURE(dictate(phrases.at(static_cast<std::size_t>(i) * 13 % phrases.size())));
        if (i + 1 == warm) before = footprintAtRest();
        if ((i + 1) % warm == 0) std::cout << "  after " << i + 1 << ": " << footprintAtRest() << std::endl;
    }
    expectNoGrowth(before);
}

}  // namespace
}  // namespace parlivo::desktop
