// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

namespace parlivo {

/// A window without a title bar, which is moved by its background. Only the program closes it, not the user.
class OnboardingWindow : public QDialog {
  public:
    OnboardingWindow();

    static QColor cream();
    static QColor ink();

    /// Sets the style sheets of the buttons and bars in a part of the window.
    static void applyStyle(const QWidget& part);

    /// Escape does nothing here.
    void reject() override {}

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    bool quitting_ = false;
};

}  // namespace parlivo
