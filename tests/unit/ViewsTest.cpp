// SPDX-License-Identifier: MIT
#include "support/WindowTest.h"
#include "ui/settings/DictionaryTab.h"
#include "ui/views/Labels.h"
#include "ui/views/OutlinedBox.h"
#include "ui/views/Windows.h"

#include <QApplication>
#include <QFontInfo>
#include <QPlainTextEdit>
#include <QTextDocument>

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
    EXPECT_NEAR(colourOf(explanation).alphaF(), 0.65, 0.01);
    EXPECT_EQ(colourOf(failure), QColor(255, 59, 48));
    QPalette dark = light;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::white);
    window.setPalette(dark);
    QCoreApplication::processEvents();
    EXPECT_EQ(colourOf(explanation).rgb(), QColor(Qt::white).rgb());
    EXPECT_NEAR(colourOf(explanation).alphaF(), 0.65, 0.01);
    EXPECT_EQ(colourOf(failure), QColor(255, 69, 58)) << "the brighter red of dark windows";
}

TEST_F(ViewsTest, ABoxIsOutlinedInTheSecondaryColourAtThreeTenths) {
    OutlinedBox box;
    QPalette colours = box.palette();
    colours.setColor(QPalette::WindowText, Qt::black);
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Window, Qt::white);
    box.setPalette(colours);
    auto* content = new QPlainTextEdit;
    content->setFrameShape(QFrame::NoFrame);
    box.fill(content);
    box.resize(80, 60);
    box.show();
    content->setFocus();
    // The secondary colour is the primary one at 0.65: black at 0.65 times 0.3 over white.
    const int expected = qRound(255 * (1 - 0.65 * 0.3));
    const QColor outline = box.grab().toImage().pixelColor(40, 0);
    EXPECT_NEAR(outline.red(), expected, 2);
    EXPECT_NEAR(outline.blue(), expected, 2) << "also with the focus in it";
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
