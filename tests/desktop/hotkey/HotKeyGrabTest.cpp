// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"
#include "desktop/hotkey/OtherClient.h"

#include <QProcess>

#include <utility>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

std::uint16_t optionWith(std::uint16_t locks) {
    return static_cast<std::uint16_t>(XCB_MOD_MASK_1 | locks);
}

class HotKeyGrabTest : public HotKeyTest {};

TEST_F(HotKeyGrabTest, ACombinationOfAnotherClientIsRefusedWithBadAccess) {
    OtherClient other;
    ASSERT_EQ(other.grabKeyEverywhere(Key::space, XCB_MOD_MASK_1), 0);
    const auto result = attempt("opt-space");
    ASSERT_TRUE(std::holds_alternative<HotKeyRefusal>(result));
    EXPECT_EQ(std::get<HotKeyRefusal>(result).status, 10);
}

TEST_F(HotKeyGrabTest, ARefusedCombinationLeavesNoGrabBehind) {
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

TEST_F(HotKeyGrabTest, UnregisteringFreesTheCombinationForOthers) {
    take("opt-space");
    OtherClient other;
    EXPECT_EQ(other.grabKey(Key::space, XCB_MOD_MASK_1), XCB_ACCESS);
    registration.reset();
    for (const auto locks : allLocks) {
        EXPECT_TRUE(waitFor([&] { return other.grabKey(Key::space, optionWith(locks)) == 0; })) << locks;
    }
}

TEST_F(HotKeyGrabTest, TheEndOfTheServiceFreesTheCombination) {
    auto second = std::make_unique<X11HotKeyService>();
    auto result = second->registerHotKey(50, HotKeyModifier::option, {});
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result));
    std::get<std::unique_ptr<HotKeyRegistration>>(result).reset();
    second.reset();
    EXPECT_TRUE(waitFor([&] {
        return std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(attempt("opt-backtick"));
    }));
}

TEST_F(HotKeyGrabTest, NothingIsReportedWithoutAHandler) {
    take("opt-space");
    handler.reset();
    keyboard.press(Key::leftAlt);
    keyboard.tap(Key::space);
    letPass(50ms);
    EXPECT_TRUE(edges(0, 0)) << seen();
}

TEST_F(HotKeyGrabTest, AKeyThatIsHeldWhileItIsUnregisteredIsReleasedOnce) {
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

TEST_F(HotKeyGrabTest, TheSamePresetAgainWhileTheKeyIsHeldStartsNothingNew) {
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

TEST_F(HotKeyGrabTest, DuringAnotherClientsGrabNothingIsReportedAndAfterItEverythingIs) {
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

TEST_F(HotKeyGrabTest, AKeyboardThatGoesAwayReleasesTheKey) {
    take("opt-space");
    keyboard.press(Key::leftAlt);
    keyboard.press(Key::space);
    ASSERT_TRUE(edges(1, 0)) << seen();
    OtherClient other;
    other.setKeyboardsEnabled(false);
    EXPECT_TRUE(edges(1, 1)) << seen();
    other.setKeyboardsEnabled(true);
}

TEST_F(HotKeyGrabTest, AReleaseThatTheServerGivesToOthersIsNoticed) {
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

TEST_F(HotKeyGrabTest, WithoutADisplayTheRefusalTellsSo) {
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

TEST_F(HotKeyGrabTest, APositionThatXDoesNotKnowIsRefused) {
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

TEST_F(HotKeyGrabTest, ALostDisplayReleasesTheKeyAndALaterOneIsTaken) {
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
