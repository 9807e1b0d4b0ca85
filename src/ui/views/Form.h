// SPDX-License-Identifier: MIT
#pragma once

#include "ui/views/Controls.h"
#include "ui/views/Labels.h"

#include <QLayout>
#include <QMargins>
#include <QPushButton>
#include <QScrollArea>
#include <QString>

#include <functional>
#include <initializer_list>
#include <vector>

class QHBoxLayout;
class QVBoxLayout;

namespace parlivo {

/// A page that shows its contents from top to bottom, scrolling when they are longer than the page.
class FormPage : public QScrollArea {
    Q_OBJECT
  public:
    explicit FormPage(QWidget* parent = nullptr);
    QWidget& contents() const { return *widget(); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void fitHeight();
};

/// A push button that Return presses too while it has the focus.
QPushButton* makeButton(const QString& label, std::function<void()> action, QWidget* parent);

/// Fills a widget with controls, from top to bottom, in sections with headings. The controls at the right of
/// a line are equally wide.
class Form {
  public:
    explicit Form(QWidget& host);

    /// The room around a section's heading.
    static QMargins headingMargins();
    /// Begins a section.
    Label& heading(const QString& text);
    Label& text(const QString& text);
    /// Explains the controls above it; `under` tells where its words begin.
    enum class Under { Line, Words };
    Label& caption(const QString& text, Under under = Under::Line);
    Toggle& toggle(const QString& label, Binding<bool> value);
    /// `label` is the section's heading. A group without a label has a `name`, which a screen reader says.
    RadioGroup& radioGroup(const QString& label, const std::vector<Option>& options, Binding<QString> value);
    RadioGroup& unlabelledRadioGroup(const QString& name, const std::vector<Option>& options,
                                     Binding<QString> value);
    Picker& picker(const QString& label, const std::vector<Option>& options, Binding<QString> value);
    /// A number between the two parts of a sentence.
    Stepper& stepper(const QString& before, const QString& after, Stepper::Steps steps, Binding<int> value);
    QPushButton& button(const QString& label, std::function<void()> action);
    void divider();
    /// Adds any other widget, which gets the form's host as its parent.
    template <typename Widget>
    Widget& add(Widget* widget) {
        addWidget(widget);
        return *widget;
    }
    /// Widgets side by side; the first takes the space that is left.
    QWidget& row(std::initializer_list<QWidget*> widgets);
    /// Buttons side by side, equally wide.
    QWidget& buttons(std::initializer_list<QPushButton*> buttons);

  private:
    void addWidget(QWidget* widget);
    QHBoxLayout* addLine();
    int controlWidth() const;
    QWidget& host_;
    QVBoxLayout* column_;
};

}  // namespace parlivo
