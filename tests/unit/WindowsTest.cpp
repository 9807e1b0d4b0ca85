// SPDX-License-Identifier: MIT
#include "support/WindowTest.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/onboarding/OnboardingWindowController.h"
#include "ui/onboarding/StepDots.h"
#include "ui/settings/SettingsWindowController.h"
#include "ui/views/ChoiceRow.h"
#include "ui/views/Contrast.h"
#include "ui/views/Form.h"
#include "ui/views/SymbolView.h"
#include "update/feedback/FeedbackWindowController.h"
#include "update/feedback/StarRating.h"

#include <QApplication>
#include <QLayout>
#include <QScreen>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>

#include <cmath>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// The shape of the windows and of what is drawn by hand in them, to the pixel.
class WindowsTest : public WindowTest {
  protected:
    WindowsTest() {
        const QString symbols = QStringLiteral(PARLIVO_RESOURCES "/symbols/");
        for (const char* name : {"star", "star.fill", "gearshape", "mic"}) {
            const QString file = QString::fromLatin1(name) + u".svg"_s;
            platform.bundle().resources[u"symbols/"_s + file] = symbols + file;
        }
    }

    ScriptedFetch fetch;

    static QWidget* windowTitled(const QString& title) {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->windowTitle() == title && window->isVisible()) return window;
        }
        return nullptr;
    }
    /// Which of the title bar's controls a window has.
    static QString controls(const QWidget& window) {
        const auto flags = window.windowFlags();
        QStringList all;
        if (flags.testFlag(Qt::FramelessWindowHint)) return u"no title bar"_s;
        if (flags.testFlag(Qt::WindowCloseButtonHint)) all.append(u"close"_s);
        if (flags.testFlag(Qt::WindowMinimizeButtonHint)) all.append(u"minimise"_s);
        if (flags.testFlag(Qt::WindowMaximizeButtonHint)) all.append(u"maximise"_s);
        return all.join(u' ');
    }
    static void expectFixedSize(const QWidget& window, QSize size) {
        EXPECT_EQ(window.size(), size);
        EXPECT_EQ(window.minimumSize(), size);
        EXPECT_EQ(window.maximumSize(), size);
    }
};

TEST_F(WindowsTest, ClosingTheSettingsPutsThemOnTheDisk) {
    SettingsWindowController controller({});
    controller.show();
    Config::set(Settings::dictionary, u"Rossi"_s);
    const int before = platform.userDefaults().flushes;
    windowTitled(u"Impostazioni Parlivo"_s)->close();
    EXPECT_EQ(platform.userDefaults().flushes, before + 1);
}

TEST_F(WindowsTest, TheSettings) {
    SettingsWindowController controller({});
    controller.show();
    QWidget* window = windowTitled(u"Impostazioni Parlivo"_s);
    ASSERT_NE(window, nullptr);
    expectFixedSize(*window, {520, 440});
    EXPECT_EQ(controls(*window), u"close minimise"_s);
    const auto* tabs = window->findChild<QTabWidget*>();
    QStringList labels;
    for (int i = 0; i < tabs->count(); ++i) labels.append(tabs->tabText(i));
    EXPECT_EQ(labels, QStringList({u"Generale"_s, u"Dettatura"_s, u"Pulizia AI"_s, u"Dizionario"_s}));
    EXPECT_FALSE(tabs->tabIcon(0).isNull());
    window->close();
    controller.show();
    EXPECT_EQ(windowTitled(u"Impostazioni Parlivo"_s), window) << "built once";
    window->setWindowState(Qt::WindowMinimized);
    controller.show();
    EXPECT_FALSE(window->isMinimized());
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowsTest, TheFeedback) {
    FeedbackWindowController controller;
    controller.show();
    const QWidget* window = windowTitled(u"Il tuo parere su Parlivo"_s);
    ASSERT_NE(window, nullptr);
    expectFixedSize(*window, {440, 400});
    EXPECT_EQ(controls(*window), u"close"_s);
}

TEST_F(WindowsTest, TheFirstRun) {
    OnboardingWindowController controller(fetch.fetch(), [](const QString&) { return std::nullopt; });
    controller.show();
    expectFixedSize(*controller.window(), {580, 520});
    EXPECT_EQ(controls(*controller.window()), u"no title bar"_s);
    const QLayout* rows = controller.window()->findChild<OnboardingView*>()->layout();
    ASSERT_EQ(rows->count(), 2) << "the page and the footer";
    const auto* pages = controller.window()->findChild<FormPage*>();
    EXPECT_EQ(rows->itemAt(0)->widget(), pages);
    EXPECT_EQ(pages->contents().layout()->itemAt(0)->widget()->contentsMargins(), QMargins(30, 30, 30, 30));
    EXPECT_EQ(rows->itemAt(1)->widget()->layout()->contentsMargins(), QMargins(20, 20, 20, 20));
}

TEST_F(WindowsTest, AFirstRunInLargeLettersScrollsAndKeepsItsButtons) {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(36);
    QApplication::setFont(large);
    {
        OnboardingWindowController controller(fetch.fetch(), [](const QString&) { return std::nullopt; });
        controller.show();
        const auto& pages = *controller.window()->findChild<FormPage*>();
        QApplication::processEvents();
        EXPECT_GT(pages.verticalScrollBar()->maximum(), 0) << "the page is higher than the screen";
        const auto& footer = *controller.window()->findChild<StepDots*>()->parentWidget();
        EXPECT_TRUE(controller.window()->rect().contains(
            QRect(footer.mapTo(controller.window(), QPoint()), footer.size())));
        EXPECT_LE(controller.window()->height(), QApplication::primaryScreen()->size().height());
    }
    QApplication::setFont(before);
}

TEST_F(WindowsTest, TheDotsOfTheFirstRun) {
    OnboardingWindowController controller(fetch.fetch(), [](const QString&) { return std::nullopt; });
    controller.show();
    const QWidget& window = *controller.window();
    auto* dots = window.findChild<StepDots*>();
    EXPECT_EQ(dots->height(), 7);
    const int step = (dots->width() - 7) / 6;
    const QImage picture = controller.window()->grab().toImage();
    const QPoint corner = dots->mapTo(&window, QPoint());
    EXPECT_EQ(picture.pixelColor(corner + QPoint(3, 3)), QColor(56, 50, 43)) << "the current page in ink";
    for (int other = 1; other < 7; ++other) {
        const QColor colour = picture.pixelColor(corner + QPoint(other * step + 3, 3));
        EXPECT_NEAR(colour.red(), 206, 2) << "ink at 0.2 on cream";
        EXPECT_NEAR(colour.blue(), 193, 2);
    }
}

TEST_F(WindowsTest, TheStars) {
    StarRating stars;
    stars.show();
    click(stars, u"3 stelle"_s);
    EXPECT_EQ(stars.rating(), 3);
    QList<QAbstractButton*> buttons = stars.findChildren<QAbstractButton*>();
    ASSERT_EQ(buttons.size(), 5);
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        QAbstractButton* star = buttons[i];
        EXPECT_EQ(star->size(), QSize(26, 26));
        EXPECT_EQ(star->x(), i * (26 + 8)) << "8 apart";
        const auto* symbol = dynamic_cast<SymbolView*>(star->findChild<QWidget*>());
        ASSERT_NE(symbol, nullptr);
        EXPECT_EQ(symbol->symbol(), i < 3 ? u"star.fill"_s : u"star"_s) << i;
        const QColor middle = star->grab().toImage().pixelColor(13, 13);
        const bool yellow = std::abs(middle.hslHueF() - QColor(255, 204, 0).hslHueF()) < 0.01;
        EXPECT_EQ(yellow && middle.hslSaturationF() > 0.5, i < 3) << i << middle.name().toStdString();
        if (i < 3) {
            EXPECT_GE(contrast(middle, stars.palette().color(QPalette::Window)), 3);
        }
    }
    click(stars, u"1 stella"_s);
    EXPECT_EQ(stars.rating(), 1);
}

TEST_F(WindowsTest, AChoiceReactsToTheMouseEverywhereInItsRow) {
    int chosen = 0;
    ChoiceRow row(u"Precisa"_s, u"la migliore"_s, {});
    row.onChosen = [&] { ++chosen; };
    row.resize(400, 48);
    row.show();
    const std::vector corners{QPoint(0, 0), QPoint(399, 0), QPoint(0, 47), QPoint(399, 47), QPoint(200, 24)};
    for (const QPoint& point : corners) QTest::mouseClick(&row, Qt::LeftButton, {}, point);
    EXPECT_EQ(chosen, static_cast<int>(corners.size()));
    QTest::mouseClick(&row, Qt::LeftButton, {}, QPoint(400, 24));
    EXPECT_EQ(chosen, static_cast<int>(corners.size())) << "beside it";
}

}  // namespace
}  // namespace parlivo
