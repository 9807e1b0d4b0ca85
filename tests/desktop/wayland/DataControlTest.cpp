// SPDX-License-Identifier: MIT
#include "desktop/wayland/Sway.h"
#include "platform/linux/wayland/DataControlPasteboard.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace parlivo::desktop {
namespace {

constexpr auto clipboard = PasteboardPlace::Clipboard;
constexpr auto primary = PasteboardPlace::PrimarySelection;
const QStringList fromPrimary{QStringLiteral("--primary")};
const QString text = QStringLiteral("Perché no? “Sì” — 12 €\nseconda riga");

class DataControlTest : public testing::Test {
  protected:
    DataControlTest() : pasteboard(wayland::DataControlPasteboard::open()) {}
    void SetUp() override { ASSERT_TRUE(pasteboard) << "the compositor has no data control"; }

    /// What another program put there is known a moment later.
    bool comesToRead(const PasteboardTexts& expected) {
        return waitFor([&] { return pasteboard->texts() == expected; });
    }

    std::unique_ptr<wayland::DataControlPasteboard> pasteboard;
};

TEST_F(DataControlTest, GivesItsTextToOthersWithoutTheFocus) {
    EXPECT_TRUE(pasteboard->setText(text, Pasteboard::History::Keep));
    EXPECT_EQ(sway::clipboard(), text.toUtf8());
    EXPECT_EQ(sway::clipboard(fromPrimary), text.toUtf8());
    EXPECT_EQ(pasteboard->texts(), (PasteboardTexts{{clipboard, text}, {primary, text}}));
    EXPECT_FALSE(sway::clipboard({QStringLiteral("--list-types")}).contains("x-kde-passwordManagerHint"));
}

TEST_F(DataControlTest, MarksAPassingTextForHistories) {
    EXPECT_TRUE(pasteboard->setText(text, Pasteboard::History::Omit));
    EXPECT_TRUE(sway::clipboard({QStringLiteral("--list-types")}).contains("x-kde-passwordManagerHint"));
    EXPECT_EQ(sway::clipboard({QStringLiteral("--type"), QStringLiteral("x-kde-passwordManagerHint")}),
              "secret");
}

TEST_F(DataControlTest, GivesALongTextWhole) {
    const QString novel = QStringLiteral("una riga di testo più lunga\n").repeated(40'000);
    EXPECT_TRUE(pasteboard->setText(novel, Pasteboard::History::Keep));
    EXPECT_EQ(sway::clipboard(), novel.toUtf8());
}

TEST_F(DataControlTest, ReadsBothPlacesOfOtherPrograms) {
    sway::copy("copiato è");
    sway::copy("evidenziato", fromPrimary);
    EXPECT_TRUE(
        comesToRead({{clipboard, QStringLiteral("copiato è")}, {primary, QStringLiteral("evidenziato")}}));
}

TEST_F(DataControlTest, WhatIsNoTextIsAbsent) {
    sway::copy("\x89PNG", {QStringLiteral("--type"), QStringLiteral("image/png")});
    sway::copy("evidenziato", fromPrimary);
    EXPECT_TRUE(comesToRead({{primary, QStringLiteral("evidenziato")}}));
}

TEST_F(DataControlTest, RestoresEachPlaceOnlyWhileItIsOurs) {
    EXPECT_TRUE(pasteboard->setText(text, Pasteboard::History::Omit));
    sway::copy("nuovo");
    ASSERT_TRUE(comesToRead({{clipboard, QStringLiteral("nuovo")}, {primary, text}}));
    pasteboard->restore({{clipboard, QStringLiteral("prima")}, {primary, QStringLiteral("evidenziato")}});
    EXPECT_EQ(sway::clipboard(), "nuovo");
    EXPECT_EQ(sway::clipboard(fromPrimary), "evidenziato");
}

TEST_F(DataControlTest, EndsWithItsTextsWithdrawn) {
    EXPECT_TRUE(pasteboard->setText(text, Pasteboard::History::Keep));
    pasteboard.reset();
    EXPECT_TRUE(waitFor([] { return sway::clipboard().isEmpty(); }));
}

TEST(DataControlOpenTest, WithoutACompositorThereIsNone) {
    const QByteArray display = qgetenv("WAYLAND_DISPLAY");
    qputenv("WAYLAND_DISPLAY", "/nonexistent/wayland-0");
    EXPECT_EQ(wayland::DataControlPasteboard::open(), nullptr);
    qputenv("WAYLAND_DISPLAY", display);
}

}  // namespace
}  // namespace parlivo::desktop
