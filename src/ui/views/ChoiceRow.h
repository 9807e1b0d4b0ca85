// SPDX-License-Identifier: MIT
#pragma once

#include "ui/views/SymbolView.h"

#include <QRadioButton>
#include <QString>

#include <functional>

class QHBoxLayout;
class QPainter;

namespace parlivo {

/// Makes Tab move the focus to the checked radio button in `group`, or to the first one if none is checked;
/// the arrow keys move between them. Qt by itself always moves to the first.
void giveTabFocusToChecked(const QWidget& group);

/// One choice of several, in texts of two sizes (an empty detail is left out); the whole row reacts. To a
/// screen reader and to the keyboard it is a radio button named by its label.
class ChoiceRow : public QRadioButton {
  public:
    /// Where they differ from the primary colour.
    struct Colours {
        PaletteColour circle = primaryColour;  ///< of the leading circle while the row is not chosen
        PaletteColour detail = secondaryColour;
        /// A thin line around that circle, for a colour that alone is too pale; none if empty.
        PaletteColour edge = {};
    };
    ChoiceRow(const QString& label, const QString& detail, Colours colours, QWidget* parent = nullptr);

    /// Called on every choice by the user, by whatever means, even of what is chosen already.
    std::function<void()> onChosen;
    /// Shows the row as chosen or not; no choice by the user.
    void setSelected(bool selected);

    /// Puts a widget at the end of the row, in place of the one there; nullptr clears it.
    void setTrailing(QWidget* trailing);
    QWidget* trailing() const { return trailing_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void showSelection(bool selected);
    void drawEdge(QPainter& painter) const;
    void toggledTo(bool selected);
    void clickedOn();

    const PaletteColour circleColour_;
    const PaletteColour edgeColour_;
    SymbolView* circle_;
    QHBoxLayout* line_;
    QWidget* trailing_ = nullptr;
    bool settingSelection_ = false;
    bool choiceReported_ = false;  ///< whether toggledTo() has reported the choice of the current click
};

}  // namespace parlivo
