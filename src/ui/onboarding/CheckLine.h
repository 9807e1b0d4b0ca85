// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QWidget>

namespace parlivo {

/// A centred line with a check mark: something is done.
class CheckLine : public QWidget {
  public:
    CheckLine(const QString& text, QWidget* parent);
};

}  // namespace parlivo
