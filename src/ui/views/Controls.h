// SPDX-License-Identifier: MIT
#pragma once

#include "ui/views/Binding.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QString>
#include <QWidget>

#include <vector>

/// Controls that are bound to a value: they read it afresh whenever they are shown and write every change at
/// once.
namespace parlivo {

class ChoiceRow;

/// One option of several: what the user reads and what is stored.
struct Option {
    QString label;
    QString value;
};

/// A check box, drawn to match the rows of choices.
class Toggle : public QCheckBox {
  public:
    Toggle(const QString& label, Binding<bool> value, QWidget* parent = nullptr);
    void refresh();
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void showEvent(QShowEvent* event) override;
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void drawBox(QPainter& painter) const;

    Binding<bool> value_;
    bool refreshing_ = false;
};

/// Choices one below the other. A stored value that is none of the options selects none.
class RadioGroup : public QWidget {
  public:
    RadioGroup(const QString& name, const std::vector<Option>& options, Binding<QString> value,
               QWidget* parent = nullptr);
    void refresh();

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    struct Row {
        ChoiceRow* row;
        QString value;
    };
    Binding<QString> value_;
    std::vector<Row> rows_;
};

/// A pop-up list. A stored value that is not among the options is shown as a pale placeholder.
class Picker : public QComboBox {
  public:
    Picker(const QString& name, const std::vector<Option>& options, Binding<QString> value,
           QWidget* parent = nullptr);
    void setOptions(const std::vector<Option>& options);
    void refresh();

  protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    Binding<QString> value_;
};

/// One line of text; `placeholder` is shown while it is empty.
class TextField : public QLineEdit {
  public:
    TextField(const QString& name, const QString& placeholder, QWidget* parent = nullptr);

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    /// The style paints no ground, because that would be square.
    void applyColours();
};

/// A number, changed in steps only.
class Stepper : public QSpinBox {
  public:
    struct Steps {
        int from;
        int to;
        int by;
    };
    Stepper(const QString& name, Steps steps, Binding<int> value, QWidget* parent = nullptr);
    void refresh();

  protected:
    void showEvent(QShowEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    Binding<int> value_;
};

/// Several lines of text, stored as typed, no-break spaces (U+00A0) and line separators (U+2028) included.
class TextEditor : public QPlainTextEdit {
  public:
    TextEditor(const QString& name, Binding<QString> value, QWidget* parent = nullptr);
    void refresh();

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QString text() const;

    Binding<QString> value_;
};

}  // namespace parlivo
