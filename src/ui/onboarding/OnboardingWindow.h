#pragma once

#include <QDialog>

namespace parlivo {

/// A window all of one piece, without a title bar: moved by its background, and not to be closed by the user,
/// only by the program and its end.
class OnboardingWindow : public QDialog {
  public:
    OnboardingWindow();

    static QColor cream();
    static QColor ink();

    /// Gives the buttons and bars of a part of the window their look.
    static void dress(const QWidget& part);

    /// Escape, which would leave any other dialog.
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
