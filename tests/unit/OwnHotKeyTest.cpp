// SPDX-License-Identifier: MIT
#include "input/HotKeyChoice.h"
#include "support/WindowTest.h"
#include "ui/settings/KeyCaptureButton.h"
#include "ui/settings/OwnHotKey.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

constexpr quint32 f9 = 75;
constexpr quint32 space = 65;
constexpr quint32 control = 37;
constexpr quint32 alt = 64;
constexpr Qt::KeyboardModifiers none = Qt::NoModifier;
constexpr Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::AltModifier;

/// The keyboard tells what X servers tell, position by position.
class OwnHotKeyTest : public WindowTest {
  protected:
    OwnHotKeyTest() {
        auto& keys = platform.hotKeys();
        keys.contended = HotKeyService::Contention::Common;
        keys.positions = {{f9, 101}, {space, 49}};
        row.show();
        row.offer();
    }

    void tell(QEvent::Type type, int key, quint32 position, Qt::KeyboardModifiers before) {
        QKeyEvent event(type, key, before, position, 0, 0);
        QCoreApplication::sendEvent(&button, &event);
    }
    void press(int key, quint32 position, Qt::KeyboardModifiers before = none) {
        tell(QEvent::KeyPress, key, position, before);
    }
    void release(int key, quint32 position, Qt::KeyboardModifiers before = none) {
        tell(QEvent::KeyRelease, key, position, before);
    }
    void holdBoth() {
        press(Qt::Key_Control, control);
        press(Qt::Key_Alt, alt, Qt::ControlModifier);
    }
    void letGoBoth() {
        release(Qt::Key_Alt, alt, both);
        release(Qt::Key_Control, control, Qt::ControlModifier);
    }
    bool isCapturing() const { return button.text().startsWith(u"Premi ora"_s); }

    OwnHotKey row{[this] { ++adopted; }};
    KeyCaptureButton& button = *row.findChild<KeyCaptureButton*>();
    int adopted = 0;
};

const QString withheld = u"Ctrl+Alt+F9 non si può usare: il sistema la tiene per sé"_s;
const QString noKey =
    u"Manca un tasto oltre a Ctrl, Alt, Super o Maiusc, oppure il sistema tiene per sé la combinazione"_s;
const QString unusable = u"Questo tasto non si può usare come scorciatoia"_s;

TEST_F(OwnHotKeyTest, AFreeCombinationIsAdopted) {
    button.click();
    holdBoth();
    press(Qt::Key_F9, f9, both);
    EXPECT_TRUE(shows(row, u"Ctrl+Alt+F9 è libera: ora è la tua scorciatoia"_s));
    EXPECT_FALSE(isCapturing());
    release(Qt::Key_F9, f9, both);
    letGoBoth();
    EXPECT_TRUE(shows(row, u"Ctrl+Alt+F9 è libera: ora è la tua scorciatoia"_s)) << "and says so";
    EXPECT_EQ(adopted, 1);
}

TEST_F(OwnHotKeyTest, APressThatTheSystemKeepsIsToldByItsRelease) {
    button.click();
    holdBoth();
    release(0, f9, both);
    EXPECT_TRUE(shows(row, withheld));
    EXPECT_FALSE(isCapturing());
    letGoBoth();
    EXPECT_TRUE(shows(row, withheld));
    EXPECT_EQ(adopted, 0);
}

TEST_F(OwnHotKeyTest, SoItIsWhenTheModifiersAreLetGoFirst) {
    button.click();
    holdBoth();
    letGoBoth();
    release(0, f9);
    EXPECT_TRUE(shows(row, withheld)) << words(row).join(u'\n').toStdString();
}

TEST_F(OwnHotKeyTest, ModifiersAloneAreAnsweredAndTheCaptureGoesOn) {
    button.click();
    holdBoth();
    EXPECT_FALSE(shows(row, noKey));
    letGoBoth();
    EXPECT_TRUE(shows(row, noKey));
    EXPECT_TRUE(isCapturing());
    press(Qt::Key_F9, f9);
    EXPECT_TRUE(shows(row, u"F9 è libera: ora è la tua scorciatoia"_s));
    EXPECT_EQ(adopted, 1);
}

TEST_F(OwnHotKeyTest, LockKeysAndUnknownKeysAreUnusable) {
    for (const int key : {int{Qt::Key_CapsLock}, int{Qt::Key_NumLock}, int{Qt::Key_ScrollLock}, 0}) {
        button.click();
        EXPECT_FALSE(shows(row, unusable)) << "the verdict on the try before";
        press(key, key == 0 ? 250 : f9);
        EXPECT_TRUE(shows(row, unusable)) << key;
        EXPECT_FALSE(isCapturing());
    }
    EXPECT_EQ(adopted, 0);
}

TEST_F(OwnHotKeyTest, TheKeyThatPressesTheButtonIsNoCombination) {
    button.setFocus();
    press(Qt::Key_Return, 36);
    ASSERT_TRUE(isCapturing()) << "by its press";
    release(Qt::Key_Return, 36);
    EXPECT_TRUE(isCapturing());
    EXPECT_TRUE(words(row).isEmpty()) << words(row).join(u'\n').toStdString();
    holdBoth();
    release(0, f9, both);
    EXPECT_TRUE(shows(row, withheld)) << "the next one is";
    press(Qt::Key_Space, space);
    release(Qt::Key_Space, space);
    ASSERT_TRUE(isCapturing()) << "by its release";
    holdBoth();
    release(0, f9, both);
    EXPECT_TRUE(shows(row, withheld));
}

TEST_F(OwnHotKeyTest, NeitherIsTheLetterThatReachesTheButton) {
    QShortcutEvent reached(QKeySequence(u"Alt+O"_s), 0);
    press(Qt::Key_Alt, alt);
    QCoreApplication::sendEvent(&button, &reached);
    ASSERT_TRUE(desktop::waitFor([this] { return isCapturing(); }));
    release(Qt::Key_O, 32, Qt::AltModifier);
    release(Qt::Key_Alt, alt, Qt::AltModifier);
    EXPECT_TRUE(isCapturing());
    EXPECT_TRUE(words(row).isEmpty()) << words(row).join(u'\n').toStdString();
}

TEST_F(OwnHotKeyTest, EscapeCallsItOffWithoutAVerdict) {
    button.click();
    press(Qt::Key_Escape, 9);
    release(Qt::Key_Escape, 9);
    EXPECT_FALSE(isCapturing());
    EXPECT_TRUE(words(row).isEmpty()) << words(row).join(u'\n').toStdString();
}

}  // namespace
}  // namespace parlivo
