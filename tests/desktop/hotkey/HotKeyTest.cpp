// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"
#include "desktop/hotkey/OtherClient.h"

#include <QProcess>

#include <array>
#include <utility>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

constexpr std::uint16_t capsLock = XCB_MOD_MASK_LOCK;
constexpr std::uint16_t numLock = XCB_MOD_MASK_2;
constexpr std::array<std::uint16_t, 4> allLocks{0, capsLock, numLock, capsLock | numLock};

std::uint16_t optionWith(std::uint16_t locks) {
    return static_cast<std::uint16_t>(XCB_MOD_MASK_1 | locks);
}

TEST_F(HotKeyTest, EveryPresetReportsBothEdges) {
    int holds = 0;
    for (const Preset& preset : HotKeyManager::presets()) {
        take(preset.id.toLatin1().constData());
        const auto chord = chordOf(preset);
        for (const auto key : chord) keyboard.press(key);
        EXPECT_TRUE(edges(holds + 1, holds)) << preset.id.toStdString() << ": " << seen();
        keyboard.release(chord.back());
        ++holds;
        EXPECT_TRUE(edges(holds, holds)) << preset.id.toStdString() << ": " << seen();
        for (const auto key : chord)
            if (key != chord.back()) keyboard.release(key);
    }
}

TEST_F(HotKeyTest, OnlyTheExactModifiersCount) {
    take("opt-space");
    keyboard.tap(Key::space);
    for (const auto more : {Key::leftControl, Key::leftShift, Key::leftSuper}) {
        keyboard.press(more);
        keyboard.tap(Key::space);
        keyboard.press(Key::leftAlt);
        keyboard.tap(Key::space);
        keyboard.release(Key::leftAlt);
        keyboard.release(more);
    }
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, WorksUnderEveryLock) {
    take("opt-space");
    int holds = 0;
    for (const auto locks : allLocks) {
        keyboard.setLocks(locks);
        keyboard.press(Key::leftAlt);
        keyboard.tap(Key::space);
        keyboard.release(Key::leftAlt);
        ++holds;
        EXPECT_TRUE(edges(holds, holds)) << "locks " << locks << ": " << seen();
    }
}

TEST_F(HotKeyTest, FollowsNumLockToAnotherModifier) {
    take("opt-space");
    OtherClient other;
    constexpr std::size_t thirdModifier = 5;
    ASSERT_TRUE(other.moveModifier(Key::numLock, thirdModifier));
    keyboard.setLocks(XCB_MOD_MASK_3);
    EXPECT_TRUE(becomesHeard()) << seen();
}

/// Loads the present map with Num Lock on another modifier, by the keyboard extension alone.
void moveNumLockByXkb(const char* modifier) {
    QProcess shell;
    shell.start(QStringLiteral("sh"),
                {QStringLiteral("-c"),
                 QStringLiteral("setxkbmap us -print | sed 's/xkb_symbols *{ *include \"\\([^\"]*\\)\"/"
                                "xkb_symbols { include \"\\1\" modifier_map %1 { Num_Lock };/' "
                                "| xkbcomp -w 0 - $DISPLAY")
                     .arg(QString::fromLatin1(modifier))});
    ASSERT_TRUE(shell.waitForFinished());
    ASSERT_EQ(shell.exitCode(), 0) << shell.readAllStandardError().toStdString();
}

TEST_F(HotKeyTest, TellsWhatTheLayoutPrintsLeftOfOne) {
    struct Layout {
        const char* name;
        const char16_t* printed;
    };
    for (const auto& [name, printed] :
         {Layout{"it", u"\\"}, Layout{"de", u"^"}, Layout{"fr", u"²"}, Layout{"us", u"`"}}) {
        ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), {QString::fromLatin1(name)}), 0);
        EXPECT_EQ(service.keyLabel(VirtualKey::grave), QStringView(printed).toString()) << name;
    }
}

TEST_F(HotKeyTest, FollowsNumLockToAnotherModifierByXkbEvents) {
    take("opt-space");
    moveNumLockByXkb("Mod3");
    keyboard.setLocks(XCB_MOD_MASK_3);
    EXPECT_TRUE(becomesHeard()) << seen();
    EXPECT_TRUE(outcomes.empty());
}

TEST_F(HotKeyTest, ALockThatAnotherClientHasAtTheNewPlaceIsReportedUntilItIsFree) {
    take("opt-space");
    OtherClient other;
    ASSERT_EQ(other.grabKeyEverywhere(Key::space, XCB_MOD_MASK_1 | XCB_MOD_MASK_3), 0);
    moveNumLockByXkb("Mod3");
    ASSERT_TRUE(waitFor([&] { return !outcomes.empty(); }));
    EXPECT_EQ(outcomes.back(), HotKeyRefusal{10}) << "BadAccess";
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    keyboard.release(Key::leftAlt);
    EXPECT_TRUE(edges(1, 1)) << "without the lock it still works; " << seen();

    other.ungrabKeyEverywhere(Key::space, XCB_MOD_MASK_1 | XCB_MOD_MASK_3);
    moveNumLockByXkb("Mod3");
    EXPECT_TRUE(waitFor([&] { return outcomes.back() == std::nullopt; }));
    EXPECT_EQ(outcomes.size(), 2U) << "each change is told once";
}

TEST_F(HotKeyTest, AHeldKeyGivesOnePressAndOneRelease) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    letPass(longHold);
    EXPECT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, ModifiersReleasedFirstDoNotEndTheHold) {
    take("ctrl-opt-space");
    keyboard.press(Key::leftControl);
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::leftAlt);
    keyboard.release(Key::leftControl);
    letPass(longHold);
    EXPECT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, IgnoresReleasesOfModifiers) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    ASSERT_TRUE(edges(1, 1)) << seen();
    keyboard.tap(Key::space);
    EXPECT_TRUE(edges(2, 2)) << seen();
}

TEST_F(HotKeyTest, ManyShortPressesAreAllReported) {
    take("opt-space");
    constexpr int times = 200;
    keyboard.press(Key::leftAlt);
    for (int i = 0; i < times; ++i) {
        keyboard.tap(Key::space);
        // Some are handled one by one, others have to wait for each other.
        if (i % 7 == 0) letPass(1ms);
    }
    EXPECT_TRUE(edges(times, times)) << seen();
}

TEST_F(HotKeyTest, AShortPressIsReportedInOrder) {
    QStringList order;
    handler.reset();
    handler = service.installHandler([&] { order.append(QStringLiteral("down")); },
                                     [&] { order.append(QStringLiteral("up")); }, {});
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    keyboard.tap(Key::space);
    ASSERT_TRUE(waitFor([&] { return order.size() >= 4; }));
    EXPECT_EQ(order.join(QLatin1Char(' ')), QStringLiteral("down up down up"));
}

TEST_F(HotKeyTest, SyntheticKeysCountAsWell) {
    take("opt-space");
    Keyboard synthetic(Keyboard::Device::Synthetic);
    synthetic.press(Key::leftAlt);
    synthetic.press(Key::space);
    EXPECT_TRUE(edges(1, 0)) << seen();
    synthetic.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, KeepsWorkingWhenTheLayoutChanges) {
    take("opt-space");
    int holds = 0;
    for (const char* const layout : {"it", "de", "us,it", "fr", "us"}) {
        Keyboard::setLayout(layout);
        for (std::uint8_t group = 0; group < 2; ++group) {
            keyboard.setGroup(group);
            keyboard.press(Key::leftAlt);
            keyboard.tap(Key::space);
            keyboard.release(Key::leftAlt);
            ++holds;
            EXPECT_TRUE(edges(holds, holds)) << layout << " group " << int{group} << ": " << seen();
        }
    }
}

TEST_F(HotKeyTest, BacktickIsThePositionLeftOfOneOnEveryLayout) {
    take("opt-backtick");
    int holds = 0;
    for (const char* const layout : {"us", "it", "de"}) {
        Keyboard::setLayout(layout);
        keyboard.press(Key::leftAlt);
        keyboard.tap(Key::grave);
        keyboard.release(Key::leftAlt);
        ++holds;
        EXPECT_TRUE(edges(holds, holds)) << layout << ": " << seen();
    }
}

TEST_F(HotKeyTest, ACombinationOfAnotherClientIsRefusedWithBadAccess) {
    OtherClient other;
    ASSERT_EQ(other.grabKeyEverywhere(Key::space, XCB_MOD_MASK_1), 0);
    const auto result = attempt("opt-space");
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result).status, 10);
}

TEST_F(HotKeyTest, ARefusedCombinationLeavesNoGrabBehind) {
    OtherClient other;
    ASSERT_EQ(other.grabKeyEverywhere(Key::space, optionWith(numLock)), 0);
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(attempt("opt-space")));
    OtherClient third;
    for (const auto locks : allLocks) {
        const int expected = locks == numLock ? XCB_ACCESS : 0;
        EXPECT_EQ(third.grabKey(Key::space, optionWith(locks)), expected) << locks;
    }
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    letPass(50ms);
    EXPECT_TRUE(edges(0, 0)) << seen();
}

TEST_F(HotKeyTest, UnregisteringFreesTheCombinationForOthers) {
    take("opt-space");
    OtherClient other;
    EXPECT_EQ(other.grabKey(Key::space, XCB_MOD_MASK_1), XCB_ACCESS);
    registration.reset();
    for (const auto locks : allLocks) {
        EXPECT_TRUE(waitFor([&] { return other.grabKey(Key::space, optionWith(locks)) == 0; })) << locks;
    }
}

TEST_F(HotKeyTest, TheEndOfTheServiceFreesTheCombination) {
    auto second = std::make_unique<X11HotKeyService>();
    auto result = second->registerHotKey(50, HotKeyModifier::option, {});
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result));
    std::get<std::unique_ptr<HotKeyRegistration>>(result).reset();
    second.reset();
    EXPECT_TRUE(waitFor([&] {
        return std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(attempt("opt-backtick"));
    }));
}

TEST_F(HotKeyTest, NothingIsReportedWithoutAHandler) {
    take("opt-space");
    handler.reset();
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    letPass(50ms);
    EXPECT_TRUE(edges(0, 0)) << seen();
}

TEST_F(HotKeyTest, AKeyThatIsHeldWhileItIsUnregisteredIsReleasedOnce) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    registration.reset();
    EXPECT_TRUE(edges(1, 1)) << seen();
    keyboard.release(Key::space);
    letPass(50ms);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, TheSamePresetAgainWhileTheKeyIsHeldStartsNothingNew) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    take("opt-space");
    letPass(longHold);
    EXPECT_TRUE(edges(1, 1)) << seen();
    keyboard.release(Key::space);
    keyboard.tap(Key::space);
    EXPECT_TRUE(edges(2, 2)) << seen();
}

TEST_F(HotKeyTest, UnderAnotherClientsGrabNothingHappensAndAfterItAllDoes) {
    take("opt-space");
    OtherClient other;
    ASSERT_TRUE(other.grabKeyboard());
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    keyboard.release(Key::leftAlt);
    letPass(50ms);
    EXPECT_TRUE(edges(0, 0)) << seen();
    other.ungrabKeyboard();
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, AKeyboardThatGoesAwayReleasesTheKey) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    OtherClient other;
    other.setKeyboardsEnabled(false);
    EXPECT_TRUE(edges(1, 1)) << seen();
    other.setKeyboardsEnabled(true);
}

TEST_F(HotKeyTest, AReleaseThatTheServerGivesToOthersIsNoticed) {
    // The chord with which a user breaks all grabs, where the server is told to have one.
    ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"),
                                {QStringLiteral("-option"), QStringLiteral("grab:break_actions")}),
              0);
    constexpr xcb_keycode_t keypadDivide = 106;
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    keyboard.press(Key::leftControl);
    keyboard.tap(keypadDivide);
    OtherClient other;
    ASSERT_TRUE(waitFor([&] { return other.grabKeyboard(); })) << "the grab was not broken";
    letPass(longHold);
    EXPECT_TRUE(edges(1, 0)) << seen();
    keyboard.release(Key::space);
    EXPECT_TRUE(edges(1, 1)) << seen();
}

TEST_F(HotKeyTest, WithoutADisplayTheRefusalTellsSo) {
    const QByteArray display = qgetenv("DISPLAY");
    for (const char* const none : {":4711", "no such display", ""}) {
        qputenv("DISPLAY", none);
        const auto result = attempt("opt-space");
        ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result)) << none;
        EXPECT_NE(std::get<HotKeyRefusal>(result).status, 0) << none;
        EXPECT_NE(std::get<HotKeyRefusal>(result).status, XCB_ACCESS) << none;
    }
    qputenv("DISPLAY", display);
    take("opt-space");
}

TEST_F(HotKeyTest, APositionThatXDoesNotKnowIsRefused) {
    const auto result = service.registerHotKey(4711, HotKeyModifier::option, {});
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result).status, XCB_VALUE);
}

/// A display that a test can take away.
class SecondDisplay {
  public:
    SecondDisplay() {
        server_.start(QStringLiteral("Xvfb"),
                      {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
                       QStringLiteral("tcp"), QStringLiteral("-noreset")});
        waitFor([this] { return server_.canReadLine() || server_.state() == QProcess::NotRunning; });
        name_ = ':' + server_.readLine().trimmed();
    }
    ~SecondDisplay() { end(); }
    SecondDisplay(const SecondDisplay&) = delete;
    SecondDisplay& operator=(const SecondDisplay&) = delete;

    const QByteArray& name() const { return name_; }
    void end() {
        server_.kill();
        server_.waitForFinished();
    }

  private:
    QProcess server_;
    QByteArray name_;
};

TEST_F(HotKeyTest, ALostDisplayReleasesTheKeyAndALaterOneIsTaken) {
    const QByteArray first = qgetenv("DISPLAY");
    SecondDisplay second;
    qputenv("DISPLAY", second.name());
    Keyboard user;
    take("opt-space");
    user.press(Key::leftAlt);
    user.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    second.end();
    EXPECT_TRUE(edges(1, 1)) << seen();
    registration.reset();
    EXPECT_TRUE(std::holds_alternative<HotKeyRefusal>(attempt("opt-space")));

    qputenv("DISPLAY", first);
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    EXPECT_TRUE(edges(2, 2)) << seen();
}

}  // namespace
}  // namespace parlivo::desktop
