// SPDX-License-Identifier: MIT
#include "support/PlatformTest.h"
#include "ui/views/Dialogs.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

using DialogsTest = PlatformTest;

/// Shows an alert with this text, has `look` look at it, and chooses its last button.
int show(const QString& text, const std::function<void(const QMessageBox&)>& look) {
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        look(*box);
        box->buttons().last()->click();
    });
    return Dialogs::current().ask(
        {.message = u"Parlivo"_s, .informativeText = text, .buttons = {u"Sì"_s, u"No"_s}});
}

TEST_F(DialogsTest, ALongTextScrollsAndLeavesTheButtonsOnTheScreen) {
    QString text;
    for (int i = 0; i < 200; ++i) text += u"Qualcosa che è cambiato\n"_s;
    const int chosen = show(text, [&](const QMessageBox& box) {
        EXPECT_LE(box.height(), box.screen()->availableSize().height());
        const auto* area = box.findChild<QScrollArea*>();
        ASSERT_NE(area, nullptr);
        EXPECT_GT(area->widget()->height(), area->height());
        EXPECT_LE(area->widget()->width(), area->viewport()->width()) << "lines are not cut off";
    });
    EXPECT_EQ(chosen, 1);
}

TEST_F(DialogsTest, AShortTextIsShownAsItIs) {
    show(u"Qualcosa che è cambiato"_s, [](const QMessageBox& box) {
        EXPECT_EQ(box.findChild<QScrollArea*>(), nullptr);
        EXPECT_EQ(box.informativeText(), u"Qualcosa che è cambiato"_s);
    });
}

TEST_F(DialogsTest, WhatLooksLikeMarkupIsShownAsItIsWritten) {
    show(u"<b>grassetto</b><img src=\"x\"> &amp; altro"_s, [](const QMessageBox& box) {
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        const auto* text = box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->textFormat(), Qt::PlainText);
        EXPECT_EQ(text->text(), u"<b>grassetto</b><img src=\"x\"> &amp; altro"_s);
    });
}

TEST_F(DialogsTest, TheMessageIsBoldBesideTheProgramsIcon) {
    platform.bundle().resources[u"icons/it.parlivo.Parlivo.svg"_s] =
        QStringLiteral(PARLIVO_RESOURCES "/icons/it.parlivo.Parlivo.svg");
    show(u"testo"_s, [](const QMessageBox& box) {
        EXPECT_FALSE(box.iconPixmap().isNull());
        const auto* message = box.findChild<QLabel*>(u"qt_msgbox_label"_s);
        ASSERT_NE(message, nullptr);
        EXPECT_GE(message->font().weight(), QFont::DemiBold);
        EXPECT_LT(box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s)->font().weight(), QFont::DemiBold);
    });
}

TEST_F(DialogsTest, KeysTypedInAnotherProgramDoNotAnswerAnAlert) {
    bool stillOpen = false;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        EXPECT_TRUE(box->testAttribute(Qt::WA_ShowWithoutActivating));
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Escape, Qt::Key_Enter}) {
            QTest::keyClick(box, key);
            QTest::keyClick(box->buttons().first(), key);
        }
        stillOpen = box->isVisible();
        box->buttons().last()->click();
    });
    EXPECT_EQ(Dialogs::current().ask({.message = u"Parlivo"_s,
                                      .informativeText = u"testo"_s,
                                      .buttons = {u"Sì"_s, u"No"_s},
                                      .arrival = Alert::Arrival::Unbidden}),
              1);
    EXPECT_TRUE(stillOpen);
}

}  // namespace
}  // namespace parlivo
