// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

namespace parlivo {

/// The user's own terms.
class DictionaryTab : public QWidget {
    Q_OBJECT

  public:
    explicit DictionaryTab(QWidget* parent = nullptr);
};

}  // namespace parlivo
