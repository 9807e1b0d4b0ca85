// SPDX-License-Identifier: MIT
#pragma once

#include "ui/views/Form.h"

namespace parlivo {

/// The user's own terms.
class DictionaryTab : public FormPage {
    Q_OBJECT

  public:
    explicit DictionaryTab(QWidget* parent = nullptr);
};

}  // namespace parlivo
