// SPDX-License-Identifier: MIT
#include "ui/views/Controls.h"

#include "ui/views/ChoiceRow.h"
#include "ui/views/Labels.h"
#include "ui/views/OutlinedBox.h"
#include "ui/views/RowLook.h"

#include <QApplication>
#include <QPainter>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <utility>

namespace parlivo {

namespace {

constexpr QMargins fieldMargins{6, 5, 6, 5};

/// Scrolling a page with the mouse over a control must not change the control.
bool acceptsWheel(const QWidget& control, QWheelEvent& wheel) {
    if (control.hasFocus()) return true;
    wheel.ignore();
    return false;
}

}  // namespace

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
    refresh();
    QCheckBox::showEvent(event);
}

QSize Toggle::sizeHint() const {
    const QSize words = fontMetrics().size(Qt::TextShowMnemonic, text());
    return {RowLook::textLeft() + words.width() + RowLook::margin,
            std::max(words.height(), RowLook::indicator()) + 2 * RowLook::padding};
}

bool Toggle::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

/// In units of a sixteenth of its side.
void Toggle::drawBox(QPainter& painter) const {
    const QColor ink = isChecked() ? accentColour(palette()) : primaryColour(palette());
    constexpr double units = 16;
    constexpr double inset = 1.25;
    constexpr double side = units - 2 * inset;
    constexpr double pen = 1.5;
    constexpr double corner = 3.5;
    painter.save();
    painter.translate(RowLook::margin, (height() - RowLook::indicator()) / 2.0);
    painter.scale(RowLook::indicator() / units, RowLook::indicator() / units);
    painter.setPen(QPen(ink, pen));
    painter.setBrush(isChecked() ? QBrush(ink) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(inset, inset, side, side), corner, corner);
    if (isChecked()) {
        painter.setPen(
            QPen(palette().color(QPalette::Window), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        constexpr std::array corners{QPointF(4.5, 8.4), QPointF(7, 10.9), QPointF(11.6, 5.6)};
        painter.drawPolyline(corners.data(), static_cast<int>(corners.size()));
    }
    painter.restore();
}

void Toggle::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    RowLook::drawBackground(painter, *this);
    drawBox(painter);
    const bool underlined = style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this) != 0;
    const int mnemonic = underlined ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    painter.setPen(primaryColour(palette()));
    painter.drawText(rect().adjusted(RowLook::textLeft(), 0, 0, 0), Qt::AlignVCenter | mnemonic, text());
}

RadioGroup::RadioGroup(const QString& name, const std::vector<Option>& options, Binding<QString> value,
                       QWidget* parent)
    : QWidget(parent), value_(std::move(value)) {
    setAccessibleName(name);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    for (const Option& option : options) {
        auto* row = new ChoiceRow(option.label, {}, {}, this);
        row->onChosen = [this, chosen = option.value] {
            if (chosen != value_.get()) value_.set(chosen);
            refresh();
        };
        column->addWidget(row);
        rows_.push_back({row, option.value});
    }
    refresh();
}

void RadioGroup::refresh() {
    const QString current = value_.get();
    for (const auto& [row, value] : rows_) row->setSelected(value == current);
}

void RadioGroup::showEvent(QShowEvent* event) {
    refresh();
    QWidget::showEvent(event);
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
    setFrame(false);
    setTextMargins(fieldMargins);
    applyColours();
}

void TextField::applyColours() {
    applyPlaceholderColour(*this);
    if (palette().color(QPalette::Base).alpha() == 0) return;
    QPalette own = palette();
    own.setColor(QPalette::Base, Qt::transparent);
    setPalette(own);
}

void TextField::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) applyColours();
}

void TextField::paintEvent(QPaintEvent* event) {
    const QPalette surroundings = parentWidget() ? parentWidget()->palette() : QApplication::palette();
    drawField(*this, surroundings, hasFocus() ? FieldFocus::Here : FieldFocus::None);
    QLineEdit::paintEvent(event);
}

Stepper::Stepper(const QString& name, Steps steps, Binding<int> value, QWidget* parent)
    : QSpinBox(parent), value_(std::move(value)) {
    setAccessibleName(name);
    setRange(steps.from, steps.to);
    setSingleStep(steps.by);
    setFocusPolicy(Qt::StrongFocus);
    lineEdit()->setReadOnly(true);
    refresh();
    connect(this, &QSpinBox::valueChanged, this, [this](int number) { value_.set(number); });
    // Stepping selects the number, which looks like an invitation to type.
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
