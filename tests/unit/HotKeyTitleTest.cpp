// SPDX-License-Identifier: MIT
#include "app/CommandLine.h"
#include "app/State.h"
#include "input/HotKeyManager.h"
#include "input/HotKeySentence.h"
#include "input/HotKeyStatus.h"
#include "input/HotKeyTitle.h"
#include "support/PlatformTest.h"
#include "support/Words.h"

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

class HotKeyTitleTest : public PlatformTest {};

Preset withLabel(const QString& label) {
    return {.id = u"x"_s, .label = label, .keyCode = VirtualKey::grave, .modifiers = HotKeyModifier::option};
}

TEST_F(HotKeyTitleTest, IsThePresetsLabel) {
    EXPECT_EQ(hotKeyTitle(withLabel(u"⌥ Spazio"_s)), u"⌥ Spazio"_s);
    EXPECT_EQ(hotKeyTitle(withLabel(u"Ctrl+Alt+Spazio"_s)), u"Ctrl+Alt+Spazio"_s);
}

TEST_F(HotKeyTitleTest, NamesWhatTheLayoutPrintsOnTheKey) {
    platform.hotKeys().printed[VirtualKey::grave] = u"\\"_s;
    EXPECT_EQ(hotKeyTitle(withLabel(u"Alt+%1"_s)), u"Alt+\\"_s);
    platform.hotKeys().printed.clear();
    EXPECT_EQ(hotKeyTitle(withLabel(u"Alt+%1"_s)), u"Alt+`"_s) << "a session that does not tell";
}

TEST_F(HotKeyTitleTest, IsThatOfTheChosenPreset) {
    EXPECT_EQ(hotKeyTitle(), HotKeyManager::presets().front().label);
    store(Settings::hotkeyPreset, u"ctrl-opt-space"_s);
    EXPECT_EQ(hotKeyTitle(), HotKeyManager::preset(u"ctrl-opt-space"_s).label);
    EXPECT_EQ(withHotKeyTitle(u"Tieni premuto %1, poi %1."_s),
              u"Tieni premuto %1, poi %1."_s.replace(u"%1"_s, hotKeyTitle()));
    EXPECT_EQ(withHotKeyTitle(u"Tieni premuto ⌥Spazio."_s), u"Tieni premuto ⌥Spazio."_s);
}

TEST_F(HotKeyTitleTest, WithoutACatalogueTheTextsNameTheDescribedKey) {
    store(Settings::hotkeyPreset, u"cmd-shift-space"_s);
    EXPECT_EQ(statusText(State::idle), u"Pronto — tieni premuto ⌥Spazio per dettare"_s);
    EXPECT_TRUE(commandLineHelp().contains(u"Tieni premuto ⌥Spazio, parla, rilascia"_s));
}

TEST_F(HotKeyTitleTest, WithOneTheyNameTheChosenKey) {
    const Words words(
        {{"Pronto — tieni premuto ⌥Spazio per dettare", u"Pronto — tieni premuto %1 per dettare"_s},
         {"Tieni premuto ⌥Spazio, parla, rilascia: il testo appare dove stai scrivendo.\n",
          u"Tieni premuto %1: il testo appare.\n"_s}});
    store(Settings::hotkeyPreset, u"cmd-shift-space"_s);
    const QString chosen = HotKeyManager::preset(u"cmd-shift-space"_s).label;
    EXPECT_EQ(statusText(State::idle), u"Pronto — tieni premuto "_s + chosen + u" per dettare"_s);
    EXPECT_EQ(stateOf(statusText(State::idle)), State::idle);
    EXPECT_TRUE(commandLineHelp().contains(u"Tieni premuto "_s + chosen + u": il testo"_s));
}

class RefusedHotKeyTest : public HotKeyTitleTest {
  protected:
    RefusedHotKeyTest() {
        platform.hotKeys().contended = HotKeyService::Contention::Common;
        HotKeyStatus::shared().set(HotKeyRefusal{10});
    }
    ~RefusedHotKeyTest() override { HotKeyStatus::shared().set(std::nullopt); }
    RefusedHotKeyTest(const RefusedHotKeyTest&) = delete;
    RefusedHotKeyTest& operator=(const RefusedHotKeyTest&) = delete;
};

TEST_F(RefusedHotKeyTest, NoSentenceNamesAKeyThatCannotBeHad) {
    const HotKeySentence sentence{.held = u"Tieni premuto %1, parla."_s,
                                  .pressed = u"Premi %1, parla."_s,
                                  .none = u"Assegna un tasto."_s};
    EXPECT_EQ(hotKeySentence(sentence), u"Tieni premuto il tasto che sceglierai, parla."_s);
    platform.hotKeys().told = HotKeyService::Edges::PressesOnly;
    EXPECT_EQ(hotKeySentence(sentence), u"Premi il tasto che sceglierai, parla."_s);
    platform.hotKeys().told = HotKeyService::Edges::None;
    EXPECT_EQ(hotKeySentence(sentence), sentence.none);
    platform.hotKeys().told = HotKeyService::Edges::Both;
    HotKeyStatus::shared().set(std::nullopt);
    EXPECT_EQ(hotKeySentence(sentence), u"Tieni premuto "_s + hotKeyTitle() + u", parla."_s);
}

TEST_F(RefusedHotKeyTest, TheTextsOfMacosStayAsTheyAre) {
    EXPECT_EQ(statusText(State::idle), u"Pronto — tieni premuto ⌥Spazio per dettare"_s);
}

}  // namespace
}  // namespace parlivo
