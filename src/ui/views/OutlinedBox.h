#pragma once

#include <QWidget>

namespace parlivo {

/// A rounded outline around one widget, filled with the ground that text is written on.
class OutlinedBox : public QWidget {
  public:
    explicit OutlinedBox(QWidget* parent = nullptr);
    void fill(QWidget* content);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QWidget* content_ = nullptr;
};

}  // namespace parlivo
