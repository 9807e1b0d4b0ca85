// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

namespace parlivo {

/// The ground and the rounded outline of whatever takes text; `surroundings` is where it lies. The outline is
/// stronger while the field has the keyboard.
enum class FieldFocus { None, Here };
void drawField(QWidget& canvas, const QPalette& surroundings, FieldFocus focus);

/// Such an outline around one widget.
class OutlinedBox : public QWidget {
  public:
    explicit OutlinedBox(QWidget* parent = nullptr);
    void fill(QWidget* content);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace parlivo
