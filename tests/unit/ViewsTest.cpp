// SPDX-License-Identifier: MIT
#include "support/WindowTest.h"
#include "ui/settings/DictionaryTab.h"
#include "ui/views/ChoiceRow.h"
#include "ui/views/Contrast.h"
#include "ui/views/Controls.h"
#include "ui/views/Labels.h"
#include "ui/views/OutlinedBox.h"
#include "ui/views/RowLook.h"
#include "ui/views/SymbolView.h"
#include "ui/views/Windows.h"

#include <QApplication>
#include <QFontInfo>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScreen>
#include <QTextDocument>

#include <algorithm>
#include <utility>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// The desktop's font for the time of a test.
class DesktopFont {
  public:
    explicit DesktopFont(const QFont& font) { QApplication::setFont(font); }
    ~DesktopFont() { QApplication::setFont(before_); }
    DesktopFont(const DesktopFont&) = delete;
    DesktopFont& operator=(const DesktopFont&) = delete;

  private:
    const QFont before_ = QApplication::font();
};

class ViewsTest : public WindowTest {};

TEST_F(ViewsTest, TheDictionaryHasTheDesktopsSizeInPointsOrPixels) {
    QFont font = QApplication::font();
    font.setPointSizeF(13.5);
    {
        const DesktopFont desktop(font);
        EXPECT_EQ(DictionaryTab().findChild<QPlainTextEdit*>()->font().pointSizeF(), 13.5);
    }
    font.setPixelSize(23);
    const DesktopFont desktop(font);
    EXPECT_EQ(DictionaryTab().findChild<QPlainTextEdit*>()->font().pixelSize(), 23);
}

TEST_F(ViewsTest, TheDictionaryIsStoredAsTyped) {
    const QString typed = u"caffè\u00a0nero\nprima\u2028seconda\tterza "_s;
    DictionaryTab tab;
    auto& editor = *tab.findChild<QPlainTextEdit*>();
    editor.insertPlainText(typed);
    EXPECT_EQ(stored(Settings::dictionary), typed);
    tab.show();
    editor.moveCursor(QTextCursor::End);
    editor.insertPlainText(u"x"_s);
    EXPECT_EQ(stored(Settings::dictionary), typed + u'x') << "read back and stored again";
}

TEST_F(ViewsTest, EveryTextStyleFollowsTheDesktopsFont) {
    QFont font = QApplication::font();
    font.setPixelSize(100);
    const DesktopFont desktop(font);
    EXPECT_EQ(textFont(TextStyle::Body).pixelSize(), 100);
    EXPECT_EQ(textFont(TextStyle::Caption).pixelSize(), 86);
    EXPECT_EQ(textFont(TextStyle::Headline).pixelSize(), 110);
    EXPECT_EQ(textFont(TextStyle::Title).pixelSize(), 170);
    EXPECT_EQ(monospacedFont(TextStyle::Body).pixelSize(), 100);
}

TEST_F(ViewsTest, ALabelHasItsOwnColourAndFollowsTheDesktops) {
    QWidget window;
    QPalette light = window.palette();
    light.setColor(QPalette::Window, Qt::white);
    light.setColor(QPalette::WindowText, Qt::black);
    window.setPalette(light);
    const Label explanation(u"piano"_s, TextStyle::Caption, secondaryColour, &window);
    const Label failure(u"errore"_s, TextStyle::Caption, errorColour, &window);
    const auto colourOf = [](const Label& label) { return label.palette().color(QPalette::WindowText); };
    EXPECT_EQ(colourOf(explanation).rgb(), QColor(Qt::black).rgb());
    EXPECT_NEAR(colourOf(explanation).alphaF(), 0.78, 0.01);
    EXPECT_NEAR(colourOf(failure).hslHueF(), QColor(255, 59, 48).hslHueF(), 0.01);
    EXPECT_GE(contrast(colourOf(failure), Qt::white), 4.5);
    QPalette dark = light;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::white);
    window.setPalette(dark);
    QCoreApplication::processEvents();
    EXPECT_EQ(colourOf(explanation).rgb(), QColor(Qt::white).rgb());
    EXPECT_NEAR(colourOf(explanation).alphaF(), 0.78, 0.01);
    EXPECT_EQ(colourOf(failure), QColor(255, 69, 58)) << "bright enough on black";
}

TEST_F(ViewsTest, ABoxHasAnOutlineThatCanBeSeen) {
    for (const auto& [ink, ground] : {std::pair(QColor(Qt::black), QColor(Qt::white)),
                                      std::pair(QColor(235, 235, 240), QColor(42, 42, 46))}) {
        OutlinedBox box;
        QPalette colours = box.palette();
        colours.setColor(QPalette::WindowText, ink);
        colours.setColor(QPalette::Base, ground);
        colours.setColor(QPalette::Window, ground);
        box.setPalette(colours);
        auto* content = new QPlainTextEdit;
        content->setFrameShape(QFrame::NoFrame);
        box.fill(content);
        box.resize(80, 60);
        box.show();
        content->setFocus();
        EXPECT_GE(contrast(box.grab().toImage().pixelColor(40, 0), ground), 3) << "also with the focus in it";
    }
}

TEST_F(ViewsTest, AColourIsMadeLegibleByItsLightnessAlone) {
    for (const QColor colour :
         {QColor(255, 59, 48), QColor(255, 149, 0), QColor(255, 204, 0), QColor(52, 199, 89),
          QColor(0, 122, 255), QColor(175, 82, 222), QColor(128, 128, 128)}) {
        for (const QColor ground :
             {QColor(255, 255, 255), QColor(239, 239, 239), QColor(42, 42, 46), QColor(0, 0, 0)}) {
            for (const double ratio : {textContrast, drawingContrast}) {
                const QColor result = legible(colour, ground, ratio);
                EXPECT_GE(contrast(result, ground), ratio);
                if (contrast(colour, ground) >= ratio) {
                    EXPECT_EQ(result, colour);
                }
                if (result.hslSaturation() > 0) {
                    EXPECT_NEAR(result.hslHueF(), colour.hslHueF(), 0.01);
                }
            }
        }
    }
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 0.01);
    EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01) << "an example of the standard's";
}

/// The contrast of a control with its window, at its best pixel within an area.
double bestContrast(QWidget& window, const QRect& area) {
    const QImage picture = window.grab().toImage();
    const QColor ground = window.palette().color(QPalette::Window);
    double best = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            best = std::max(best, contrast(picture.pixelColor(x, y), ground));
    return best;
}

TEST_F(ViewsTest, ACheckBoxShowsItsStateInEveryTheme) {
    for (const auto& [ink, ground] : {std::pair(QColor(Qt::black), QColor(239, 239, 239)),
                                      std::pair(QColor(235, 235, 240), QColor(42, 42, 46))}) {
        QWidget window;
        QPalette colours;
        colours.setColor(QPalette::WindowText, ink);
        colours.setColor(QPalette::Window, ground);
        window.setPalette(colours);
        bool on = false;
        Toggle toggle(u"Suoni"_s, {.get = [&] { return on; }, .set = [&](bool value) { on = value; }},
                      &window);
        toggle.resize(toggle.sizeHint());
        window.resize(toggle.size());
        window.show();
        const QRect box(6, (toggle.height() - 16) / 2, 16, 16);
        EXPECT_GE(bestContrast(window, box), 3);
        const QImage off = window.grab().toImage().copy(box);
        toggle.click();
        EXPECT_TRUE(on);
        EXPECT_GE(bestContrast(window, box), 3);
        EXPECT_NE(window.grab().toImage().copy(box), off);
    }
}

TEST_F(ViewsTest, BoxesAndCirclesGrowWithTheLetters) {
    QFont font = QApplication::font();
    const auto sides = [&font](int letters) {
        font.setPixelSize(letters);
        const DesktopFont desktop(font);
        const Toggle toggle(u"Suoni"_s, {.get = [] { return true; }, .set = [](bool) {}});
        const ChoiceRow choice(u"Uno"_s, {}, {});
        const int circle = choice.findChild<SymbolView*>()->width();
        EXPECT_EQ(circle, RowLook::indicator()) << "as large as a box, so that both stand in one column";
        EXPECT_GE(toggle.sizeHint().height(), circle + 2 * RowLook::padding);
        EXPECT_EQ(RowLook::textLeft() - circle, RowLook::margin + RowLook::gap);
        return circle;
    };
    EXPECT_EQ(sides(12), 16) << "9 points";
    EXPECT_EQ(sides(13), 16) << "10 points";
    EXPECT_EQ(sides(19), 22) << "14 points";
    EXPECT_EQ(sides(27), 32) << "20 points";
}

TEST_F(ViewsTest, ALargeBoxIsFilledToItsEdgesAndLeavesTheWordsFree) {
    QFont font = QApplication::font();
    font.setPixelSize(32);
    const DesktopFont desktop(font);
    QWidget window;
    Toggle toggle(QString(), {.get = [] { return true; }, .set = [](bool) {}}, &window);
    toggle.resize(RowLook::textLeft() + 50, toggle.sizeHint().height());
    window.resize(toggle.size());
    window.show();
    const QImage picture = window.grab().toImage();
    const QColor ground = window.palette().color(QPalette::Window);
    const int middle = toggle.height() / 2;
    EXPECT_GE(contrast(picture.pixelColor(RowLook::margin + 3, middle), ground), 3);
    EXPECT_GE(contrast(picture.pixelColor(RowLook::margin + RowLook::indicator() - 4, middle), ground), 3);
    for (int x = RowLook::margin + RowLook::indicator(); x < toggle.width(); ++x)
        ASSERT_EQ(picture.pixelColor(x, middle), ground) << x;
}

TEST_F(ViewsTest, AGroupStoresAChoiceOnceAndShowsWhatIsStored) {
    QStringList stored;
    QString current = u"b"_s;
    RadioGroup group(u"Gruppo"_s, {{u"Uno"_s, u"a"_s}, {u"Due"_s, u"b"_s}},
                     {.get = [&] { return current; },
                      .set =
                          [&](const QString& value) {
                              stored.append(value);
                              current = value;
                          }});
    group.show();
    const auto chosen = [&](const QString& name) {
        return qobject_cast<QRadioButton*>(button(group, name))->isChecked();
    };
    EXPECT_TRUE(chosen(u"Due"_s));
    click(group, u"Due"_s);
    EXPECT_EQ(stored, QStringList());
    click(group, u"Uno"_s);
    EXPECT_EQ(stored, QStringList({u"a"_s}));
    EXPECT_TRUE(chosen(u"Uno"_s));
    current = u"altro"_s;
    group.refresh();
    EXPECT_FALSE(chosen(u"Uno"_s));
    EXPECT_FALSE(chosen(u"Due"_s));
}

TEST_F(ViewsTest, AWindowGrowsWithTheFontAndStaysOnTheScreen) {
    QWidget window;
    QFont font = window.font();
    font.setPixelSize(13);
    window.setFont(font);
    fixSize(window, {520, 440});
    EXPECT_EQ(window.size(), QSize(520, 440));
    fixSize(window, {520, 440}, 600);
    EXPECT_EQ(window.size(), QSize(600, 440)) << "its contents need more";
    font.setPixelSize(20);
    window.setFont(font);
    fixSize(window, {520, 440});
    EXPECT_GT(window.width(), 520);
    EXPECT_GT(window.height(), 440);
    font.setPixelSize(100);
    window.setFont(font);
    fixSize(window, {520, 440});
    EXPECT_LE(window.width(), window.screen()->availableSize().width());
    EXPECT_LT(window.height(), window.screen()->availableSize().height()) << "room for the title bar";
}

TEST_F(ViewsTest, AToolTipShowsMarkupAsItIsWritten) {
    QWidget widget;
    setPlainToolTip(widget, u"/home/utente/modelli"_s);
    EXPECT_EQ(widget.toolTip(), u"/home/utente/modelli"_s);
    setPlainToolTip(widget, u"/home/<b>utente</b>"_s);
    EXPECT_TRUE(widget.toolTip().contains(u"&lt;b&gt;utente"_s)) << widget.toolTip().toStdString();
}

}  // namespace
}  // namespace parlivo
