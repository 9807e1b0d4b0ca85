// SPDX-License-Identifier: MIT
#pragma once

#include "ui/onboarding/CentredPage.h"

#include <functional>

class QPushButton;

namespace parlivo {

/// Asks for one permission, and says so once it is granted.
class PermissionPage : public CentredPage {
    Q_OBJECT

  public:
    struct Texts {
        QString symbol;
        QString title;
        QString text;
        QString button;
    };
    PermissionPage(const Texts& texts, const std::function<void()>& ask, QWidget* parent);
    void setGranted(bool granted);

  private:
    QPushButton* button_;
    QWidget* granted_;
};

}  // namespace parlivo
