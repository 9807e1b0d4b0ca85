// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QFont>
#include <QLabel>
#include <QPalette>
#include <QString>

#include <functional>

namespace parlivo {

/// What a text is for. Its size and weight are relative to the desktop's own font.
enum class TextStyle { Title, Headline, Lead, Body, Caption };
QFont textFont(TextStyle style);
/// The desktop's monospaced font in the size of that style.
QFont monospacedFont(TextStyle style);

/// A colour that depends on the surroundings, such as the desktop's dark palette.
using PaletteColour = std::function<QColor(const QPalette&)>;
/// The colour of ordinary text.
QColor primaryColour(const QPalette& palette);
/// The paler colour of explanations.
QColor secondaryColour(const QPalette& palette);
/// For the words and signs of errors, for signs of success and for stars: the system's colours, darker on a
/// light window as far as it takes to be legible.
QColor errorColour(const QPalette& palette);
QColor successColour(const QPalette& palette);
QColor starColour(const QPalette& palette);
/// The desktop's accent colour, for what is chosen and for what has the keyboard.
QColor accentColour(const QPalette& palette);
/// Of the outline of what lies in these surroundings, as pale as may be.
QColor outlineColour(const QPalette& surroundings);
bool isDark(const QPalette& palette);

/// A label as it is read out: without the ampersand before the letter that Alt reaches it by.
QString withoutMnemonic(QString label);

/// Sets the placeholder colour of a control, which some dark desktops do not set. To be called again when the
/// palette changes.
void applyPlaceholderColour(QWidget& control);

/// Keeps the words of a disabled button legible: some styles make them a shade of the button. To be called
/// again when the palette changes.
void applyDisabledColour(QWidget& button);

/// A text that wraps. What looks like markup is shown as it is written.
class Label : public QLabel {
  public:
    Label(const QString& text, TextStyle style, PaletteColour colour = primaryColour,
          QWidget* parent = nullptr);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void applyColour();
    PaletteColour colour_;
};

}  // namespace parlivo
