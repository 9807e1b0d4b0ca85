#pragma once

#include "ui/views/SymbolView.h"

#include <QRadioButton>
#include <QString>

#include <functional>

class QHBoxLayout;

namespace parlivo {

/// One choice of several, in words of two sizes; the whole row reacts. To a screen reader and to the keyboard
/// it is a radio button named by its label.
class ChoiceRow : public QRadioButton {
  public:
    /// What the leading circle is drawn in while the row is not chosen; chosen, it is in the primary colour.
    ChoiceRow(const QString& label, const QString& detail, PaletteColour unselectedColour,
              QWidget* parent = nullptr);

    /// Called on every choice by the user, by whatever means, even of what is chosen already.
    std::function<void()> onChosen;
    /// Shows the row as chosen or not; no choice by the user.
    void setSelected(bool selected);

    /// Puts a widget at the end of the row, in place of the one there. Nothing clears it.
    void setTrailing(QWidget* trailing);
    QWidget* trailing() const { return trailing_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void showSelection(bool selected);
    void toggledTo(bool selected);
    void clickedOn();

    PaletteColour unselectedColour_;
    SymbolView* circle_;
    QHBoxLayout* line_;
    QWidget* trailing_ = nullptr;
    bool byProgram_ = false;
    bool told_ = false;  ///< of the choice that a click is just making
};

}  // namespace parlivo
