// SPDX-License-Identifier: MIT
#pragma once

#include "ui/views/Labels.h"

#include <QString>
#include <QWidget>

namespace parlivo {

/// Draws a symbol of the bundle, crisp at every scale of the screen. For decoration: its meaning must also be
/// given in words. An unknown symbol draws nothing.
class SymbolView : public QWidget {
    Q_OBJECT
  public:
    /// `size` in points, both ways.
    SymbolView(const QString& name, int size, PaletteColour colour = primaryColour,
               QWidget* parent = nullptr);

    void setSymbol(const QString& name, PaletteColour colour);
    const QString& symbol() const { return name_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString name_;
    PaletteColour colour_;
};

}  // namespace parlivo
