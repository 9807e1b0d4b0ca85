// SPDX-License-Identifier: MIT
#include "ui/views/Contrast.h"
#include "ui/views/Form.h"
#include "ui/views/Labels.h"
#include "ui/views/OutlinedBox.h"
#include "ui/views/ScrollBars.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <array>

namespace parlivo {
namespace {

/// A page five times as long as what is seen of it.
class ScrollBarsTest : public testing::Test {
  protected:
    ScrollBarsTest() {
        auto* column = new QVBoxLayout(&page.contents());
        auto* content = new Label(QStringLiteral("Lungo"), TextStyle::Body);
        content->setFixedHeight(1000);
        column->setContentsMargins(0, 0, 0, 0);
        column->addWidget(content);
        page.resize(300, 200);
        page.show();
        QCoreApplication::processEvents();
    }

    /// In the bar's coordinates, when it stands at its upper end.
    QPoint onHandle() const { return {bar.width() / 2, 10}; }

    FormPage page;
    QScrollBar& bar = *page.verticalScrollBar();
};

QPalette colours(const QColor& ink, const QColor& window, const QColor& base) {
    QPalette palette;
    palette.setColor(QPalette::WindowText, ink);
    palette.setColor(QPalette::Text, ink);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Base, base);
    return palette;
}

const std::array themes{colours(Qt::black, QColor(239, 239, 239), Qt::white),
                        colours(QColor(235, 235, 240), QColor(42, 42, 46), QColor(30, 30, 33))};

TEST_F(ScrollBarsTest, ThePagesBarIsSlimAndTakesAsMuchFromThePage) {
    ASSERT_TRUE(bar.isVisible());
    EXPECT_EQ(bar.width(), 10);
    EXPECT_EQ(page.viewport()->width(), 290);
}

TEST_F(ScrollBarsTest, TheHandleCanBeToldFromThePage) {
    for (const QPalette& theme : themes) {
        page.setPalette(theme);
        QCoreApplication::processEvents();
        const QImage picture = page.grab().toImage();
        const QPoint handle = bar.mapTo(&page, onHandle());
        const QColor ground = picture.pixelColor(handle + QPoint(0, 150));
        EXPECT_EQ(ground, theme.color(QPalette::Window)) << "no trough";
        EXPECT_GE(contrast(picture.pixelColor(handle), ground), 3);
        EXPECT_EQ(picture.pixelColor(bar.mapTo(&page, QPoint(bar.width() / 2, bar.height() - 4))), ground)
            << "no arrow button";
    }
}

TEST_F(ScrollBarsTest, TheHandleCanBeToldFromAText) {
    for (const QPalette& theme : themes) {
        OutlinedBox box;
        box.setPalette(theme);
        auto* text = new QPlainTextEdit(QStringLiteral("riga\n").repeated(50));
        text->setFrameShape(QFrame::NoFrame);
        box.fill(text);
        box.resize(200, 100);
        box.show();
        QCoreApplication::processEvents();
        const QScrollBar& texts = *text->verticalScrollBar();
        ASSERT_TRUE(texts.isVisible());
        EXPECT_EQ(texts.width(), 10);
        const QImage picture = box.grab().toImage();
        const QPoint handle = texts.mapTo(&box, onHandle());
        const QColor ground = picture.pixelColor(texts.mapTo(&box, QPoint(5, texts.height() - 4)));
        EXPECT_EQ(ground, theme.color(QPalette::Base));
        EXPECT_GE(contrast(picture.pixelColor(handle), ground), 3);
    }
}

TEST_F(ScrollBarsTest, TheHandleFollowsTheMouseToTheEndAndBack) {
    QTest::mousePress(&bar, Qt::LeftButton, {}, onHandle());
    QTest::mouseMove(&bar, onHandle() + QPoint(0, 50));
    EXPECT_GT(bar.value(), 0);
    EXPECT_LT(bar.value(), bar.maximum());
    QTest::mouseMove(&bar, onHandle() + QPoint(0, 500));
    EXPECT_EQ(bar.value(), bar.maximum());
    QTest::mouseMove(&bar, onHandle());
    EXPECT_EQ(bar.value(), 0);
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, onHandle());
}

TEST_F(ScrollBarsTest, AClickBesideTheHandleTurnsThePage) {
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(bar.width() - 1, bar.height() - 1));
    EXPECT_EQ(bar.value(), bar.pageStep());
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(1, 0));
    EXPECT_EQ(bar.value(), 0);
}

TEST_F(ScrollBarsTest, WheelAndKeysMoveIt) {
    QWheelEvent wheel(onHandle(), bar.mapToGlobal(onHandle()), {}, {0, -120}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&bar, &wheel);
    EXPECT_GT(bar.value(), 0);
    QTest::keyClick(&bar, Qt::Key_End);
    EXPECT_EQ(bar.value(), bar.maximum());
    QTest::keyClick(&bar, Qt::Key_PageUp);
    EXPECT_EQ(bar.value(), bar.maximum() - bar.pageStep());
}

TEST_F(ScrollBarsTest, AVeryLongTextLeavesAHandleToBeCaught) {
    page.contents().setMinimumHeight(1'000'000);
    QCoreApplication::processEvents();
    QTest::mousePress(&bar, Qt::LeftButton, {}, QPoint(bar.width() / 2, 28));
    QTest::mouseMove(&bar, QPoint(bar.width() / 2, 28 + bar.height()));
    EXPECT_EQ(bar.value(), bar.maximum());
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, QPoint(bar.width() / 2, 28 + bar.height()));
}

}  // namespace
}  // namespace parlivo
