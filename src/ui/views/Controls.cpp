// SPDX-License-Identifier: MIT
#include "ui/views/Controls.h"

#include "ui/views/Labels.h"

#include <QRadioButton>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace parlivo {

namespace {

constexpr int fieldMargin = 3;

/// Scrolling a page with the mouse over a control must not change the control.
bool acceptsWheel(const QWidget& control, QWheelEvent& wheel) {
    if (control.hasFocus()) return true;
    wheel.ignore();
    return false;
}

}  // namespace

void giveTabFocusToChecked(const QWidget& group) {
    const auto buttons = group.findChildren<QRadioButton*>(Qt::FindDirectChildrenOnly);
    const bool chosen = std::ranges::any_of(buttons, &QRadioButton::isChecked);
    for (QRadioButton* button : buttons) {
        button->setFocusPolicy(!chosen || button->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

Toggle::Toggle(const QString& label, Binding<bool> value, QWidget* parent)
    : QCheckBox(label, parent), value_(std::move(value)) {
    refresh();
    // Not "clicked": a screen reader toggles without a click.
    connect(this, &QCheckBox::toggled, this, [this](bool on) {
        if (refreshing_) return;
        value_.set(on);
        refresh();
    });
}

void Toggle::refresh() {
    refreshing_ = true;
    setChecked(value_.get());
    refreshing_ = false;
}

void Toggle::showEvent(QShowEvent* event) {
    applyIndicatorColour(*this);
    refresh();
    QCheckBox::showEvent(event);
}

void Toggle::changeEvent(QEvent* event) {
    QCheckBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) applyIndicatorColour(*this);
}

RadioGroup::RadioGroup(const QString& name, const std::vector<Option>& options, Binding<QString> value,
                       QWidget* parent)
    : QWidget(parent), value_(std::move(value)) {
    setAccessibleName(name);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(3);
    for (const Option& option : options) {
        auto* button = new QRadioButton(option.label, this);
        column->addWidget(button);
        buttons_.push_back({button, option.value});
        connect(button, &QRadioButton::toggled, this, [this, chosen = option.value](bool on) {
            if (on) value_.set(chosen);
        });
    }
    refresh();
}

void RadioGroup::refresh() {
    const QString current = value_.get();
    for (const auto& [button, value] : buttons_) {
        const QSignalBlocker blocker(button);
        // A button of an exclusive group cannot be turned off by itself.
        button->setAutoExclusive(false);
        button->setChecked(value == current);
        button->setAutoExclusive(true);
    }
    giveTabFocusToChecked(*this);
}

void RadioGroup::showEvent(QShowEvent* event) {
    applyIndicatorColour(*this);
    refresh();
    QWidget::showEvent(event);
}

void RadioGroup::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) applyIndicatorColour(*this);
}

Picker::Picker(const QString& name, const std::vector<Option>& options, Binding<QString> value,
               QWidget* parent)
    : QComboBox(parent), value_(std::move(value)) {
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QComboBox::activated, this, [this](int index) { value_.set(itemData(index).toString()); });
    setOptions(options);
    applyPlaceholderColour(*this);
}

void Picker::setOptions(const std::vector<Option>& options) {
    clear();
    for (const Option& option : options) addItem(option.label, option.value);
    refresh();
}

void Picker::refresh() {
    const QString current = value_.get();
    setPlaceholderText(current);
    setCurrentIndex(findData(current));
}

void Picker::showEvent(QShowEvent* event) {
    refresh();
    QComboBox::showEvent(event);
}

void Picker::changeEvent(QEvent* event) {
    QComboBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) applyPlaceholderColour(*this);
}

void Picker::wheelEvent(QWheelEvent* event) {
    if (acceptsWheel(*this, *event)) QComboBox::wheelEvent(event);
}

TextField::TextField(const QString& name, const QString& placeholder, QWidget* parent) : QLineEdit(parent) {
    setAccessibleName(name);
    setPlaceholderText(placeholder);
    setTextMargins(fieldMargin, fieldMargin, fieldMargin, fieldMargin);
    applyPlaceholderColour(*this);
}

void TextField::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) applyPlaceholderColour(*this);
}

Stepper::Stepper(const QString& before, const QString& after, Steps steps, Binding<int> value,
                 QWidget* parent)
    : QSpinBox(parent), value_(std::move(value)) {
    setAccessibleName(before.trimmed());
    setPrefix(before);
    setSuffix(after);
    setRange(steps.from, steps.to);
    setSingleStep(steps.by);
    setFocusPolicy(Qt::StrongFocus);
    lineEdit()->setReadOnly(true);
    refresh();
    connect(this, &QSpinBox::valueChanged, this, [this](int number) { value_.set(number); });
    // Stepping selects the whole sentence, which looks like an invitation to type.
    connect(lineEdit(), &QLineEdit::selectionChanged, lineEdit(), &QLineEdit::deselect);
}

void Stepper::refresh() {
    const QSignalBlocker blocker(this);
    setValue(value_.get());
}

void Stepper::showEvent(QShowEvent* event) {
    refresh();
    QSpinBox::showEvent(event);
}

void Stepper::wheelEvent(QWheelEvent* event) {
    if (acceptsWheel(*this, *event)) QSpinBox::wheelEvent(event);
}

TextEditor::TextEditor(const QString& name, Binding<QString> value, QWidget* parent)
    : QPlainTextEdit(parent), value_(std::move(value)) {
    setAccessibleName(name);
    setTabChangesFocus(true);
    refresh();
    connect(this, &QPlainTextEdit::textChanged, this, [this] { value_.set(text()); });
}

void TextEditor::refresh() {
    const QString current = value_.get();
    if (current == text()) return;  // the cursor stays where it is
    const QSignalBlocker blocker(this);
    setPlainText(current);
}

QString TextEditor::text() const {
    // toPlainText() would make blanks of no-break spaces, and line feeds of line separators.
    return document()->toRawText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

void TextEditor::showEvent(QShowEvent* event) {
    refresh();
    QPlainTextEdit::showEvent(event);
}

}  // namespace parlivo
