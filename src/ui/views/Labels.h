#pragma once

#include <QColor>
#include <QFont>
#include <QLabel>
#include <QPalette>
#include <QString>

#include <functional>

namespace parlivo {

/// What a text is for; decides its size and weight, all relative to the desktop's own font.
enum class TextStyle { Title, Headline, Lead, Body, Caption };
QFont textFont(TextStyle style);
/// The desktop's monospaced font in the size of that style.
QFont monospacedFont(TextStyle style);

/// A colour that depends on the surroundings, such as the desktop's dark palette.
using PaletteColour = std::function<QColor(const QPalette&)>;
/// The colour of ordinary text.
QColor primaryColour(const QPalette& palette);
/// The paler colour of what only explains.
QColor secondaryColour(const QPalette& palette);
/// For what went wrong, what went well, and what is chosen with the heart.
QColor errorColour(const QPalette& palette);
QColor successColour(const QPalette& palette);
bool isDark(const QPalette& palette);

/// Gives what a control shows in place of a text the pale colour that some dark desktops forget to state. To
/// be called again when the palette changes.
void applyPlaceholderColour(QWidget& control);

/// Keeps the boxes and circles of a control to be seen where a dark desktop fills and outlines them in shades
/// of its background. To be called again when the palette changes.
void applyIndicatorColour(QWidget& control);

/// A text that wraps, in plain letters: what looks like markup is shown as it is.
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
