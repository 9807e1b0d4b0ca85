// SPDX-License-Identifier: MIT
#include "ui/views/Labels.h"

#include "ui/views/Contrast.h"
#include "ui/views/SystemColour.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>

#include <utility>

namespace parlivo {

namespace {

constexpr int darkLightness = 128;  // of 255
constexpr float secondaryOpacity = 0.78F;
constexpr float outlineOpacity = 0.3F;  // of a secondary text's
constexpr float placeholderOpacity = 0.8F;
constexpr float disabledOpacity = 0.75F;

double scaleOf(TextStyle style) {
    switch (style) {
        case TextStyle::Title:
            return 1.7;
        case TextStyle::Headline:
            return 1.1;
        case TextStyle::Lead:
            return 1.08;
        case TextStyle::Body:
            return 1.0;
        case TextStyle::Caption:
            return 0.86;
    }
    return 1.0;
}

/// A desktop states the size of its font in points or in pixels.
void setSize(QFont& font, TextStyle style) {
    const QFont desktop = QApplication::font();
    if (desktop.pointSizeF() > 0) {
        font.setPointSizeF(desktop.pointSizeF() * scaleOf(style));
    } else {
        font.setPixelSize(qRound(desktop.pixelSize() * scaleOf(style)));
    }
}

Background background(const QPalette& palette) {
    return isDark(palette) ? Background::Dark : Background::Light;
}

QColor signalColour(SystemColour colour, const QPalette& palette, double ratio) {
    return legible(systemColour(colour, background(palette)), palette.color(QPalette::Window), ratio);
}

}  // namespace

QFont textFont(TextStyle style) {
    QFont font = QApplication::font();
    setSize(font, style);
    if (style == TextStyle::Title || style == TextStyle::Headline) font.setWeight(QFont::DemiBold);
    return font;
}

QFont monospacedFont(TextStyle style) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    setSize(font, style);
    return font;
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < darkLightness;
}

QColor primaryColour(const QPalette& palette) {
    return palette.color(QPalette::WindowText);
}

QColor secondaryColour(const QPalette& palette) {
    QColor colour = primaryColour(palette);
    colour.setAlphaF(secondaryOpacity);
    return colour;
}

QColor errorColour(const QPalette& palette) {
    return signalColour(SystemColour::Red, palette, textContrast);
}

QColor successColour(const QPalette& palette) {
    return signalColour(SystemColour::Green, palette, drawingContrast);
}

QColor starColour(const QPalette& palette) {
    return signalColour(SystemColour::Yellow, palette, drawingContrast);
}

QColor accentColour(const QPalette& palette) {
    return legible(palette.color(QPalette::Active, QPalette::Highlight), palette.color(QPalette::Window),
                   drawingContrast);
}

QColor outlineColour(const QPalette& surroundings) {
    QColor pale = secondaryColour(surroundings);
    pale.setAlphaF(pale.alphaF() * outlineOpacity);
    const QColor ground = surroundings.color(QPalette::Window);
    return legible(composited(pale, ground), ground, drawingContrast);
}

QString withoutMnemonic(QString label) {
    return label.remove(QLatin1Char('&'));
}

void applyPlaceholderColour(QWidget& control) {
    QColor pale = control.palette().color(QPalette::Text);
    pale.setAlphaF(placeholderOpacity);
    if (control.palette().color(QPalette::PlaceholderText) == pale) return;
    QPalette own;
    own.setColor(QPalette::PlaceholderText, pale);
    control.setPalette(own);
}

void applyDisabledColour(QWidget& button) {
    QColor pale = button.palette().color(QPalette::Active, QPalette::ButtonText);
    pale.setAlphaF(disabledOpacity);
    if (button.palette().color(QPalette::Disabled, QPalette::ButtonText) == pale) return;
    QPalette own;
    own.setColor(QPalette::Disabled, QPalette::ButtonText, pale);
    button.setPalette(own);
}

Label::Label(const QString& text, TextStyle style, PaletteColour colour, QWidget* parent)
    : QLabel(text, parent), colour_(std::move(colour)) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    // On a button a label would take the button's colour.
    setForegroundRole(QPalette::WindowText);
    setFont(textFont(style));
    applyColour();
}

void Label::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange) applyColour();
}

void Label::applyColour() {
    const QPalette surroundings = parentWidget() ? parentWidget()->palette() : QApplication::palette();
    const QColor wanted = colour_(surroundings);
    if (palette().color(QPalette::WindowText) == wanted) return;
    QPalette own;
    own.setColor(QPalette::WindowText, wanted);
    setPalette(own);
}

}  // namespace parlivo
