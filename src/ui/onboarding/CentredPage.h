// SPDX-License-Identifier: MIT
#pragma once

#include "ui/views/Labels.h"

#include <QString>
#include <QWidget>

class QVBoxLayout;

namespace parlivo {

/// A page of the first run with everything in its middle, one below the other.
class CentredPage : public QWidget {
  public:
    explicit CentredPage(QWidget* parent);

    void symbol(const QString& name);
    void title(const QString& text);
    Label& text(const QString& text);
    void add(QWidget* widget, Qt::Alignment alignment = {});
    void gap(int points);

  private:
    QVBoxLayout* column_;
};

}  // namespace parlivo
