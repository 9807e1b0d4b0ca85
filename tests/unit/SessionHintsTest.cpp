// SPDX-License-Identifier: MIT
#include "support/WindowTest.h"
#include "ui/SessionHints.h"
#include "ui/onboarding/ReadyPage.h"
#include "ui/settings/DictationTab.h"
#include "ui/settings/GeneralTab.h"

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

const QString holdToSpeak = u"Tieni premuto per parlare (push-to-talk)"_s;

class SessionHintsTest : public WindowTest {
  protected:
    void hint(SessionHint::Topic topic, const QString& text) {
        platform.hints.push_back({.topic = topic,
                                  .text = text,
                                  .lines = u"bindsym F9 exec parlivo --toggle"_s,
                                  .actionLabel = u"Fallo tu"_s,
                                  .action = [this] {
                                      ++actions;
                                      platform.hints.clear();
                                  }});
    }
    int actions = 0;
};

TEST_F(SessionHintsTest, NothingIsShownWhereAllWorks) {
    DictationTab tab({});
    tab.show();
    const auto* hints = tab.findChild<SessionHints*>();
    ASSERT_NE(hints, nullptr);
    EXPECT_FALSE(hints->isVisible()) << "it would take room";
    EXPECT_NE(button(tab, holdToSpeak), nullptr);
}

TEST_F(SessionHintsTest, EachTopicHasItsPlace) {
    hint(SessionHint::Topic::HotKey, u"Il tasto."_s);
    hint(SessionHint::Topic::Text, u"Il testo."_s);
    DictationTab dictation({});
    dictation.show();
    EXPECT_TRUE(shows(dictation, u"Il tasto."_s));
    EXPECT_FALSE(shows(dictation, u"Il testo."_s));
    GeneralTab general({});
    general.show();
    EXPECT_TRUE(shows(general, u"Il testo."_s));
    EXPECT_FALSE(shows(general, u"Il tasto."_s));
    ReadyPage ready([] {}, nullptr);
    ready.show();
    EXPECT_TRUE(shows(ready, u"Il tasto."_s));
}

TEST_F(SessionHintsTest, WhereTextIsOnlyPastedNoPaceIsOffered) {
    const QString instead =
        u"In questa sessione il testo non si scrive lettera per lettera, ma tutto insieme: la velocità non si sceglie."_s;
    GeneralTab tab({});
    tab.show();
    auto* const fast = button(tab, u"Veloce (~285 caratteri/s)"_s);
    ASSERT_NE(fast, nullptr);
    EXPECT_TRUE(fast->isVisible());
    EXPECT_FALSE(shows(tab, instead));
    tab.hide();
    platform.keyboard().types = false;
    tab.show();
    EXPECT_FALSE(fast->isVisible());
    EXPECT_TRUE(shows(tab, instead));
}

TEST_F(SessionHintsTest, LinesAreShownAndCanBeCopied) {
    hint(SessionHint::Topic::HotKey, u"Il tasto."_s);
    DictationTab tab({});
    tab.show();
    EXPECT_TRUE(shows(tab, u"bindsym F9 exec parlivo --toggle"_s));
    click(tab, u"Copia"_s);
    ASSERT_EQ(platform.pasteboard().sets().size(), 1U);
    EXPECT_EQ(platform.pasteboard().sets()[0].text, u"bindsym F9 exec parlivo --toggle"_s);
}

TEST_F(SessionHintsTest, WhatWasDoneIsGone) {
    hint(SessionHint::Topic::HotKey, u"Il tasto."_s);
    DictationTab tab({});
    tab.show();
    click(tab, u"Fallo tu"_s);
    EXPECT_EQ(actions, 1);
    EXPECT_FALSE(shows(tab, u"Il tasto."_s));
    // What the user does elsewhere is noticed, too.
    hint(SessionHint::Topic::HotKey, u"Altro."_s);
    EXPECT_TRUE(desktop::waitFor([&] { return shows(tab, u"Altro."_s); }));
}

TEST_F(SessionHintsTest, PushToTalkIsNotOfferedWhereOnlyPressesAreTold) {
    platform.hotKeys().told = HotKeyService::Edges::PressesOnly;
    DictationTab tab({});
    tab.show();
    EXPECT_EQ(button(tab, holdToSpeak), nullptr);
    EXPECT_TRUE(shows(
        tab,
        u"In questa sessione si sa solo quando il tasto viene premuto: premi per iniziare, ripremi per fermare."_s));
    EXPECT_TRUE(shows(tab, u"Scorciatoia"_s));
}

TEST_F(SessionHintsTest, NoKeyIsOfferedWhereThereAreNone) {
    platform.hotKeys().told = HotKeyService::Edges::None;
    DictationTab tab({});
    tab.show();
    EXPECT_EQ(button(tab, holdToSpeak), nullptr);
    EXPECT_FALSE(shows(tab, u"Scorciatoia"_s));
}

}  // namespace
}  // namespace parlivo
