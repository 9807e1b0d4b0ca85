// SPDX-License-Identifier: MIT
#pragma once

#include "ui/onboarding/CentredPage.h"

#include <functional>

class QPushButton;

namespace parlivo {

class TextField;

/// The last page: a field for the first dictation, and what is wrong with the hot key.
class ReadyPage : public CentredPage {
    Q_OBJECT

  public:
    /// `chooseHotKey` leads to where another one can be chosen.
    ReadyPage(const std::function<void()>& chooseHotKey, QWidget* parent);

    /// The first dictation is to land here.
    QWidget* field() const;

  private:
    void showWarning();

    TextField* field_ = nullptr;
    Label* warning_ = nullptr;
    QPushButton* choose_ = nullptr;
};

}  // namespace parlivo
