// SPDX-License-Identifier: MIT
#include "ui/views/Form.h"

#include "ui/views/RowLook.h"
#include "ui/views/ScrollBars.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace parlivo {

namespace {

constexpr QSize buttonPadding{16, 2};
/// The distance between neighbours; sections are two of them apart.
constexpr int rhythm = 8;
constexpr int sideMargin = 10;

/// Some styles leave too little space around a button's text, and make a disabled one's too pale.
class PaddedButton : public QPushButton {
  public:
    PaddedButton(const QString& label, QWidget* parent) : QPushButton(label, parent) {
        applyDisabledColour(*this);
    }
    QSize sizeHint() const override { return QPushButton::sizeHint() + buttonPadding; }

  protected:
    void changeEvent(QEvent* event) override {
        QPushButton::changeEvent(event);
        if (event->type() == QEvent::PaletteChange) applyDisabledColour(*this);
    }
};

}  // namespace

FormPage::FormPage(QWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    useSlimScrollBar(*this);
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
    column_->setContentsMargins(sideMargin, rhythm, sideMargin, 2 * rhythm);
    column_->setSpacing(0);
    column_->setAlignment(Qt::AlignTop);
}

void Form::addWidget(QWidget* widget) {
    column_->addWidget(widget);
}

QMargins Form::headingMargins() {
    return {RowLook::margin, rhythm, RowLook::margin, rhythm / 2};
}

Label& Form::heading(const QString& text) {
    auto& label = add(new Label(text, TextStyle::Headline, primaryColour, &host_));
    label.setContentsMargins(headingMargins());
    return label;
}

Label& Form::text(const QString& text) {
    auto& label = add(new Label(text, TextStyle::Body, primaryColour, &host_));
    label.setContentsMargins(RowLook::margin, rhythm / 2, RowLook::margin, rhythm / 2);
    return label;
}

Label& Form::caption(const QString& text, Under under) {
    auto& label = add(new Label(text, TextStyle::Caption, secondaryColour, &host_));
    const int left = under == Under::Words ? RowLook::textLeft() : RowLook::margin;
    label.setContentsMargins(left, 0, RowLook::margin, rhythm / 2);
    return label;
}

Toggle& Form::toggle(const QString& label, Binding<bool> value) {
    return add(new Toggle(label, std::move(value), &host_));
}

RadioGroup& Form::radioGroup(const QString& label, const std::vector<Option>& options,
                             Binding<QString> value) {
    heading(label);
    return unlabelledRadioGroup(label, options, std::move(value));
}

RadioGroup& Form::unlabelledRadioGroup(const QString& name, const std::vector<Option>& options,
                                       Binding<QString> value) {
    return add(new RadioGroup(name, options, std::move(value), &host_));
}

int Form::controlWidth() const {
    constexpr int characters = 30;
    return characters * host_.fontMetrics().averageCharWidth();
}

Picker& Form::picker(const QString& label, const std::vector<Option>& options, Binding<QString> value) {
    auto* words = new Label(label, TextStyle::Body, primaryColour, &host_);
    auto* picker = new Picker(withoutMnemonic(label), options, std::move(value), &host_);
    picker->setFixedWidth(controlWidth());
    words->setBuddy(picker);
    row({words, picker});
    return *picker;
}

Stepper& Form::stepper(const QString& before, const QString& after, Stepper::Steps steps,
                       Binding<int> value) {
    auto* stepper = new Stepper(withoutMnemonic(before.trimmed()), steps, std::move(value), &host_);
    auto* words = new Label(before.trimmed(), TextStyle::Body, primaryColour, &host_);
    auto* unit = new Label(after.trimmed(), TextStyle::Body, primaryColour, &host_);
    for (Label* part : {words, unit}) part->setWordWrap(false);
    words->setBuddy(stepper);
    QHBoxLayout* layout = addLine();
    for (QWidget* widget : std::initializer_list<QWidget*>{words, stepper, unit}) layout->addWidget(widget);
    layout->addStretch(1);
    return *stepper;
}

QPushButton& Form::button(const QString& label, std::function<void()> action) {
    QPushButton* button = makeButton(label, std::move(action), &host_);
    addLine()->addWidget(button, 0, Qt::AlignLeft);
    return *button;
}

void Form::divider() {
    auto* line = new QFrame(&host_);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    column_->addSpacing(rhythm);
    column_->addWidget(line);
}

QHBoxLayout* Form::addLine() {
    auto* line = new QWidget(&host_);
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(RowLook::margin, rhythm / 2, RowLook::margin, rhythm / 2);
    layout->setSpacing(rhythm);
    addWidget(line);
    return layout;
}

QWidget& Form::row(std::initializer_list<QWidget*> widgets) {
    QHBoxLayout* layout = addLine();
    for (QWidget* widget : widgets) layout->addWidget(widget);
    layout->setStretch(0, 1);
    return *layout->parentWidget();
}

QWidget& Form::buttons(std::initializer_list<QPushButton*> buttons) {
    QHBoxLayout* layout = addLine();
    for (QPushButton* button : buttons) layout->addWidget(button, 1);
    return *layout->parentWidget();
}

}  // namespace parlivo
