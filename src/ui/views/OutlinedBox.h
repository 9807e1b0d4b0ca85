// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

namespace parlivo {

/// A rounded outline around one widget, filled with the background colour of text fields.
class OutlinedBox : public QWidget {
  public:
    explicit OutlinedBox(QWidget* parent = nullptr);
    void fill(QWidget* content);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace parlivo
