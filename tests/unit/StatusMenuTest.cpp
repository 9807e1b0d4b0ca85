// SPDX-License-Identifier: MIT
#include "app/menu/StatusMenu.h"
#include "input/HotKeyManager.h"
#include "support/PlatformTest.h"
#include "ui/views/Contrast.h"
#include "ui/views/SystemColour.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QKeyEvent>
#include <QPalette>
#include <QShowEvent>

#include <gmock/gmock.h>

namespace parlivo {
namespace {

using Foreground = StatusItemPlace::Foreground;
using Menus = StatusItemPlace::Menus;
using testing::ElementsAre;

/// The menu as the user reads it, separators as "-", what is hidden left out.
QStringList lines(const StatusMenu& menu) {
    QStringList texts;
    for (const QAction* line : menu.menu().actions()) {
        if (line->isVisible()) texts.append(line->isSeparator() ? QStringLiteral("-") : line->text());
    }
    return texts;
}

QAction* line(const StatusMenu& menu, int number) {
    return menu.menu().actions().at(number - 1);
}

class StatusMenuTest : public PlatformTest {
  protected:
    StatusMenuTest() {
        const QString symbols = QStringLiteral(PARLIVO_RESOURCES "/symbols/");
        for (const char* name : {"mic", "mic.fill", "waveform", "wand.and.stars", "keyboard"}) {
            const QString file = QString::fromLatin1(name) + QStringLiteral(".svg");
            platform.bundle().resources[QStringLiteral("symbols/") + file] = symbols + file;
        }
    }

    StatusMenu::Actions recorded() {
        const auto note = [this](const char* what) {
            return [this, what] { chosen.append(QString::fromLatin1(what)); };
        };
        return {.willOpen = note("willOpen"),
                .openMicSettings = note("microphone"),
                .openAccessibilitySettings = note("accessibility"),
                .installUpdate = note("update"),
                .openSettings = note("settings"),
                .openFeedback = note("feedback"),
                .quit = note("quit")};
    }

    QStringList chosen;
    StatusMenu menu{recorded()};
};

TEST_F(StatusMenuTest, HasItsLinesInOrder) {
    menu.setTitle(QStringLiteral("Pronto — tieni premuto ⌥Spazio per dettare"));
    menu.setMicrophone(MicrophoneStatus::Authorised);
    menu.setAccessibility(true);
    EXPECT_EQ(lines(menu), QStringList({QStringLiteral("Pronto — tieni premuto ⌥Spazio per dettare"),
                                        QStringLiteral("-"), QStringLiteral("Microfono: ✅"),
                                        QStringLiteral("Accessibilità: ✅"), QStringLiteral("-"),
                                        QStringLiteral("Impostazioni…"), QStringLiteral("Invia feedback…"),
                                        QStringLiteral("-"), QStringLiteral("Esci da Parlivo")}));
    EXPECT_EQ(menu.menu().actions().size(), 10);
    EXPECT_EQ(line(menu, 6)->text(), QStringLiteral("Aggiornamento disponibile…"));
}

TEST_F(StatusMenuTest, OnlyTheFirstLineCannotBeChosen) {
    menu.setUpdate(QStringLiteral("2.0.1"));
    EXPECT_FALSE(line(menu, 1)->isEnabled());
    for (const int number : {3, 4, 6, 7, 8, 10}) EXPECT_TRUE(line(menu, number)->isEnabled()) << number;
}

TEST_F(StatusMenuTest, NamesEveryMicrophoneStatus) {
    menu.setMicrophone(MicrophoneStatus::NotAsked);
    EXPECT_EQ(line(menu, 3)->text(), QStringLiteral("Microfono: ⚠️ non richiesto — clicca"));
    menu.setMicrophone(MicrophoneStatus::Denied);
    EXPECT_EQ(line(menu, 3)->text(), QStringLiteral("Microfono: ⛔️ negato — clicca"));
    menu.setMicrophone(MicrophoneStatus::Authorised);
    EXPECT_EQ(line(menu, 3)->text(), QStringLiteral("Microfono: ✅"));
}

TEST_F(StatusMenuTest, NamesBothAnswersOfAccessibility) {
    menu.setAccessibility(false);
    EXPECT_EQ(line(menu, 4)->text(), QStringLiteral("Accessibilità: ⛔️ manca — clicca"));
    menu.setAccessibility(true);
    EXPECT_EQ(line(menu, 4)->text(), QStringLiteral("Accessibilità: ✅"));
}

TEST_F(StatusMenuTest, OffersAnUpdateOnlyWhileThereIsOne) {
    menu.setUpdate(QStringLiteral("2.0.1"));
    EXPECT_TRUE(line(menu, 6)->isVisible());
    EXPECT_EQ(line(menu, 6)->text(), QStringLiteral("⬆️ Aggiorna a Parlivo 2.0.1…"));
    menu.setUpdate({});
    EXPECT_FALSE(line(menu, 6)->isVisible());
}

TEST_F(StatusMenuTest, AnUpdateUnderWayIsShownAndCannotBeChosen) {
    menu.setUpdate(QStringLiteral("2.0.1"), UpdateStage::UnderWay);
    EXPECT_TRUE(line(menu, 6)->isVisible());
    EXPECT_FALSE(line(menu, 6)->isEnabled());
    EXPECT_EQ(line(menu, 6)->text(), QStringLiteral("⬇️ Scarico Parlivo 2.0.1…"));
    menu.setUpdate(QStringLiteral("2.0.1"));
    EXPECT_TRUE(line(menu, 6)->isEnabled()) << "it failed, and can be tried again";
    EXPECT_EQ(line(menu, 6)->text(), QStringLiteral("⬆️ Aggiorna a Parlivo 2.0.1…"));
}

TEST_F(StatusMenuTest, TheFirstLineCanBeReadInEveryTheme) {
    const QPalette before = QApplication::palette();
    for (const QColor ink : {QColor(0, 0, 0), QColor(255, 255, 255), QColor(0, 0, 0)}) {
        QPalette theme = before;
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            theme.setColor(QPalette::All, role, ink);
        QApplication::setPalette(theme);
        QShowEvent opens;
        QCoreApplication::sendEvent(&menu.menu(), &opens);
        const QColor title = menu.menu().palette().color(QPalette::Disabled, QPalette::Text);
        EXPECT_EQ(title.rgb(), ink.rgb());
        EXPECT_GT(title.alphaF(), 0.5);
        EXPECT_LT(title.alphaF(), 1);
        EXPECT_EQ(menu.menu().palette().color(QPalette::Active, QPalette::Text), ink);
    }
    QApplication::setPalette(before);
}

TEST_F(StatusMenuTest, PassesEveryChoiceOn) {
    for (const int number : {3, 4, 6, 7, 8, 10}) line(menu, number)->trigger();
    EXPECT_THAT(chosen, ElementsAre(QStringLiteral("microphone"), QStringLiteral("accessibility"),
                                    QStringLiteral("update"), QStringLiteral("settings"),
                                    QStringLiteral("feedback"), QStringLiteral("quit")));
}

TEST_F(StatusMenuTest, GivesKeyEquivalentsToSettingsAndQuit) {
    EXPECT_EQ(line(menu, 7)->shortcut(), QKeySequence(QStringLiteral("Ctrl+,")));
    EXPECT_EQ(line(menu, 10)->shortcut(), QKeySequence(QStringLiteral("Ctrl+Q")));
    for (const int number : {1, 3, 4, 6, 8}) EXPECT_TRUE(line(menu, number)->shortcut().isEmpty()) << number;
}

TEST_F(StatusMenuTest, KeyEquivalentsWorkWhileTheMenuIsOpen) {
    QKeyEvent comma(QEvent::KeyPress, Qt::Key_Comma, Qt::ControlModifier);
    QKeyEvent plain(QEvent::KeyPress, Qt::Key_Q, Qt::NoModifier);
    QKeyEvent quit(QEvent::KeyPress, Qt::Key_Q, Qt::ControlModifier);
    for (QKeyEvent* key : {&comma, &plain, &quit}) QCoreApplication::sendEvent(&menu.menu(), key);
    EXPECT_THAT(chosen, ElementsAre(QStringLiteral("settings"), QStringLiteral("quit")));
}

TEST_F(StatusMenuTest, ShowsTitlesUnchanged) {
    const auto title = QStringLiteral("⚠️ R&D: a_b.wav");
    menu.setTitle(title);
    EXPECT_EQ(menu.title(), title);
    EXPECT_EQ(line(menu, 1)->text(), QStringLiteral("⚠️ R&&D: a_b.wav")) << "drawn by a menu of ours";
    platform.statusItems().report(StatusItemPlace{Foreground::Light, Menus::DrawnByPanel});
    EXPECT_EQ(line(menu, 1)->text(), QStringLiteral("⚠️ R&&D: a__b.wav")) << "drawn by the panel";
    EXPECT_EQ(menu.title(), title);
}

TEST_F(StatusMenuTest, AMenuThatAPanelDrawsIsOursWhileWeShowIt) {
    platform.statusItems().report(StatusItemPlace{Foreground::Light, Menus::DrawnByPanel});
    menu.setTitle(QStringLiteral("⚠️ a_b.wav"));
    menu.setUpdate(QStringLiteral("2.0_rc&1"));
    EXPECT_EQ(line(menu, 1)->text(), QStringLiteral("⚠️ a__b.wav"));
    EXPECT_EQ(line(menu, 6)->text(), QStringLiteral("⬆️ Aggiorna a Parlivo 2.0__rc&&1…"));
    menu.menu().popup({});  // as the left button does
    EXPECT_EQ(line(menu, 1)->text(), QStringLiteral("⚠️ a_b.wav"));
    EXPECT_EQ(line(menu, 6)->text(), QStringLiteral("⬆️ Aggiorna a Parlivo 2.0_rc&&1…"));
    menu.setTitle(QStringLiteral("⚠️ c_d.wav"));
    EXPECT_EQ(line(menu, 1)->text(), QStringLiteral("⚠️ c_d.wav"));
    menu.menu().close();
    EXPECT_EQ(line(menu, 1)->text(), QStringLiteral("⚠️ c__d.wav"));
}

TEST_F(StatusMenuTest, ATabInATitleBeginsNoShortcut) {
    menu.setTitle(QStringLiteral("⚠️ a\tb"));
    EXPECT_EQ(line(menu, 1)->text(), QStringLiteral("⚠️ a b"));
}

/// The ink of an icon: the colour of its opaque pixels, which must all be the same.
QColor ink(const QIcon& icon) {
    const QImage image = icon.pixmap(32).toImage().convertToFormat(QImage::Format_ARGB32);
    QColor found;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() < 255) continue;
            if (found.isValid() && found != pixel) return {};
            found = pixel;
        }
    }
    return found;
}

TEST_F(StatusMenuTest, TintsTheSymbolInTheSystemsHuesSoThatItCanBeSeen) {
    const std::vector<std::pair<Tint, SystemColour>> tints{{Tint::Red, SystemColour::Red},
                                                           {Tint::Orange, SystemColour::Orange},
                                                           {Tint::Purple, SystemColour::Purple},
                                                           {Tint::Blue, SystemColour::Blue}};
    constexpr double leastForSymbols = 3;  // WCAG 2.1, 1.4.11
    for (const Foreground foreground : {Foreground::Dark, Foreground::Light}) {
        const bool darkPanel = foreground == Foreground::Light;
        const QColor panel = darkPanel ? QColor(0x30, 0x30, 0x30) : QColor(0xef, 0xef, 0xef);
        platform.statusItems().report(StatusItemPlace{foreground, Menus::DrawnByUs});
        for (const auto& [tint, colour] : tints) {
            menu.setIcon(QStringLiteral("mic.fill"), tint);
            const QColor described = systemColour(colour, darkPanel ? Background::Dark : Background::Light);
            EXPECT_NEAR(ink(menu.icon()).hslHueF(), described.hslHueF(), 0.01)
                << described.name().toStdString();
            EXPECT_GE(contrast(ink(menu.icon()), panel), leastForSymbols) << described.name().toStdString();
        }
    }
}

TEST_F(StatusMenuTest, ASymbolOnAPanelOfUnknownColourCanBeSeenOnAny) {
    platform.statusItems().report(StatusItemPlace{Foreground::Unknown, Menus::DrawnByPanel});
    for (const Tint tint : {Tint::None, Tint::Red, Tint::Orange, Tint::Purple, Tint::Blue}) {
        menu.setIcon(QStringLiteral("mic.fill"), tint);
        for (const QColor panel : {QColor(0, 0, 0), QColor(0x2e, 0x2e, 0x2e), QColor(0xff, 0xff, 0xff)}) {
            const QImage icon = menu.icon().pixmap(22).toImage().convertToFormat(QImage::Format_ARGB32);
            double best = 0;
            for (int y = 0; y < icon.height(); ++y)
                for (int x = 0; x < icon.width(); ++x)
                    best = std::max(best, contrast(composited(icon.pixelColor(x, y), panel), panel));
            EXPECT_GE(best, 3) << panel.name().toStdString();
        }
    }
}

TEST_F(StatusMenuTest, TheToolTipTellsStateAndKey) {
    const QString key = HotKeyManager::presets().front().label;
    menu.setTitle(QStringLiteral("🔴 Registrazione…"));
    EXPECT_EQ(menu.toolTip(), QStringLiteral("Parlivo\n🔴 Registrazione…\n") + key);
    menu.setTitle(QStringLiteral("Pronto — tieni premuto %1").arg(key));
    EXPECT_EQ(menu.toolTip(), QStringLiteral("Parlivo\nPronto — tieni premuto ") + key) << "once is enough";
}

TEST_F(StatusMenuTest, TheUntintedSymbolFollowsThePanel) {
    menu.setIcon(QStringLiteral("mic"), Tint::None);
    platform.statusItems().report(StatusItemPlace{Foreground::Light, Menus::DrawnByUs});
    EXPECT_EQ(ink(menu.icon()).name(), QStringLiteral("#f2f2f2"));
    platform.statusItems().report({});
    platform.statusItems().report(StatusItemPlace{Foreground::Dark, Menus::DrawnByUs});
    EXPECT_EQ(ink(menu.icon()).name(), QStringLiteral("#222222"));
}

TEST_F(StatusMenuTest, APlaceThatColoursSymbolsItselfGetsUntintedOnesAsTemplates) {
    platform.statusItems().report(StatusItemPlace{Foreground::Template, Menus::Native});
    menu.setIcon(QStringLiteral("mic"), Tint::None);
    EXPECT_TRUE(menu.icon().isMask());
    menu.setIcon(QStringLiteral("mic.fill"), Tint::Red);
    EXPECT_FALSE(menu.icon().isMask());
    menu.setIcon(QStringLiteral("mic"), Tint::None);
    platform.statusItems().report(StatusItemPlace{Foreground::Dark, Menus::DrawnByUs});
    EXPECT_FALSE(menu.icon().isMask());
}

TEST_F(StatusMenuTest, EveryStateHasItsOwnSymbol) {
    std::vector<QImage> images;
    for (const char* name : {"mic", "mic.fill", "waveform", "wand.and.stars", "keyboard"}) {
        menu.setIcon(QString::fromLatin1(name), Tint::Red);
        images.push_back(menu.icon().pixmap(22).toImage());
        EXPECT_FALSE(images.back().isNull()) << name;
    }
    for (std::size_t one = 0; one < images.size(); ++one)
        for (std::size_t other = 0; other < one; ++other) EXPECT_NE(images[one], images[other]);
}

TEST_F(StatusMenuTest, ASymbolThatCannotBeMadeLeavesNoImage) {
    menu.setIcon(QStringLiteral("mic"), Tint::None);
    menu.setIcon(QStringLiteral("no.such.symbol"), Tint::None);
    EXPECT_TRUE(menu.icon().isNull());
    QFile broken(platform.directories().temporaryDir.filePath(QStringLiteral("broken.svg")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("<svg");
    broken.close();
    platform.bundle().resources[QStringLiteral("symbols/broken.svg")] = broken.fileName();
    menu.setIcon(QStringLiteral("broken"), Tint::Red);
    EXPECT_TRUE(menu.icon().isNull());
}

TEST_F(StatusMenuTest, AsksToBeRefreshedWhenItOpens) {
    Q_EMIT menu.menu().aboutToShow();
    EXPECT_THAT(chosen, ElementsAre(QStringLiteral("willOpen")));
}

TEST(StatusMenuLifeTest, WatchesForAPlaceOnlyWhileItLives) {
    FakePlatform& platform = FakePlatform::install();
    {
        const StatusMenu menu({});
        EXPECT_TRUE(platform.statusItems().observer);
    }
    EXPECT_FALSE(platform.statusItems().observer);
    FakePlatform::uninstall();
}

}  // namespace
}  // namespace parlivo
