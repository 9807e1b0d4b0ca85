// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

#include <functional>

namespace parlivo {

/// A window without a title bar, which is moved by its background. Only the program closes it; what the user
/// does to close it is passed on.
class OnboardingWindow : public QDialog {
  public:
    explicit OnboardingWindow(std::function<void()> closeWanted);

    static QColor cream();
    static QColor ink();

    /// Sets the style sheets of the buttons and bars in a part of the window.
    static void applyStyle(const QWidget& part);

    /// Escape.
    void reject() override { closeWanted_(); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    const std::function<void()> closeWanted_;
    bool quitting_ = false;
};

}  // namespace parlivo
