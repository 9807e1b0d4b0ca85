// SPDX-License-Identifier: MIT
#pragma once

#include "ui/onboarding/CentredPage.h"

#include <functional>

namespace parlivo {

/// Where the models go. `pick` is called when the user wants another folder, which showPath() then shows.
class FolderPage : public CentredPage {
    Q_OBJECT

  public:
    FolderPage(const QString& path, const std::function<void()>& pick, QWidget* parent);
    void showPath(const QString& path);

  private:
    Label* path_;
};

}  // namespace parlivo
