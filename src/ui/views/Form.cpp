// SPDX-License-Identifier: MIT
#include "ui/views/Form.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace parlivo {

namespace {

constexpr QSize buttonPadding{16, 2};

/// Some styles leave too little space around a button's text.
class PaddedButton : public QPushButton {
  public:
    using QPushButton::QPushButton;
    QSize sizeHint() const override { return QPushButton::sizeHint() + buttonPadding; }
};

}  // namespace

FormPage::FormPage(QWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setWidget(new QWidget);
    // The page shows what lies behind it, which on some styles is not the window's colour.
    viewport()->setAutoFillBackground(false);
    widget()->setAutoFillBackground(false);
    widget()->installEventFilter(this);
}

bool FormPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget() && event->type() == QEvent::LayoutRequest) fitHeight();
    return QScrollArea::eventFilter(watched, event);
}

void FormPage::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    fitHeight();
}

/// A scroll area does not know that the height of wrapped words follows from the width: it would scroll pages
/// that fit.
void FormPage::fitHeight() {
    const QLayout* layout = widget()->layout();
    if (layout) widget()->setMinimumHeight(layout->totalHeightForWidth(viewport()->width()));
}

QPushButton* makeButton(const QString& label, std::function<void()> action, QWidget* parent) {
    auto* button = new PaddedButton(label, parent);
    button->setAutoDefault(true);
    QObject::connect(button, &QPushButton::clicked, button, std::move(action));
    return button;
}

Form::Form(QWidget& host) : host_(host), column_(new QVBoxLayout(&host)) {
    column_->setContentsMargins(20, 10, 20, 8);
    column_->setSpacing(5);
    column_->setAlignment(Qt::AlignTop);
}

void Form::addWidget(QWidget* widget) {
    column_->addWidget(widget);
}

Label& Form::text(const QString& text) {
    return add(new Label(text, TextStyle::Body, primaryColour, &host_));
}

Label& Form::caption(const QString& text) {
    return add(new Label(text, TextStyle::Caption, secondaryColour, &host_));
}

Toggle& Form::toggle(const QString& label, Binding<bool> value) {
    return add(new Toggle(label, std::move(value), &host_));
}

RadioGroup& Form::radioGroup(const QString& label, const std::vector<Option>& options,
                             Binding<QString> value) {
    text(label);
    return unlabelledRadioGroup(label, options, std::move(value));
}

RadioGroup& Form::unlabelledRadioGroup(const QString& name, const std::vector<Option>& options,
                                       Binding<QString> value) {
    return add(new RadioGroup(name, options, std::move(value), &host_));
}

Picker& Form::picker(const QString& label, const std::vector<Option>& options, Binding<QString> value) {
    auto* words = new Label(label, TextStyle::Body, primaryColour, &host_);
    auto* picker = new Picker(label, options, std::move(value), &host_);
    words->setBuddy(picker);
    row({words, picker});
    return *picker;
}

Stepper& Form::stepper(const QString& before, const QString& after, Stepper::Steps steps,
                       Binding<int> value) {
    auto* stepper = new Stepper(before, after, steps, std::move(value), &host_);
    column_->addWidget(stepper, 0, Qt::AlignLeft);
    return *stepper;
}

QPushButton& Form::button(const QString& label, std::function<void()> action) {
    QPushButton* button = makeButton(label, std::move(action), &host_);
    column_->addWidget(button, 0, Qt::AlignLeft);
    return *button;
}

void Form::divider() {
    auto* line = new QFrame(&host_);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    column_->addWidget(line);
}

QWidget& Form::row(std::initializer_list<QWidget*> widgets) {
    auto* line = new QWidget(&host_);
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget : widgets) layout->addWidget(widget);
    layout->setStretch(0, 1);
    return add(line);
}

}  // namespace parlivo
