// SPDX-License-Identifier: MIT
#include "update/feedback/FeedbackView.h"

#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Text.h"
#include "ui/views/Form.h"
#include "ui/views/OutlinedBox.h"
#include "ui/views/SymbolView.h"
#include "update/feedback/FeedbackRequest.h"
#include "update/feedback/StarRating.h"

#include <QPlainTextEdit>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr int textHeight = 120;
constexpr int heartSize = 36;

}  // namespace

FeedbackView::FeedbackView(std::function<void()> onClose, QWidget* parent)
    : QWidget(parent), onClose_(std::move(onClose)), pages_(new QStackedWidget(this)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(pages_);
    pages_->addWidget(makeForm());
    pages_->addWidget(makeThanks());
    refresh();
    text_->setFocus();
}

QWidget* FeedbackView::makeForm() {
    auto* form = new QWidget(this);
    auto* column = new QVBoxLayout(form);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    page_ = new FormPage(form);
    fill(page_->contents());
    column->addWidget(page_, 1);
    column->addWidget(makeButtons(*form));
    return form;
}

void FeedbackView::fill(QWidget& form) {
    auto* column = new QVBoxLayout(&form);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(new Label(tr("Come valuti Parlivo?"), TextStyle::Headline, primaryColour, &form));
    rating_ = new StarRating(&form);
    column->addWidget(rating_);
    column->addWidget(
        new Label(tr("Cosa non va? Cosa miglioreresti?"), TextStyle::Caption, primaryColour, &form));
    column->addWidget(makeTextField(form));
    email_ = new TextField(tr("Email"), tr("Email (facoltativa, se vuoi una risposta)"), &form);
    column->addWidget(email_);
    column->addWidget(new Label(
        tr("Inviamo solo: valutazione, testo, email se inserita, versione app e macOS. Nient'altro."),
        TextStyle::Caption, secondaryColour, &form));
    errorLine_ = new Label({}, TextStyle::Caption, errorColour, &form);
    column->addWidget(errorLine_);
    column->addStretch(1);
}

QWidget* FeedbackView::makeTextField(QWidget& form) {
    auto* outline = new OutlinedBox(&form);
    text_ = new QPlainTextEdit(outline);
    text_->setFrameShape(QFrame::NoFrame);
    text_->setTabChangesFocus(true);
    text_->setAccessibleName(tr("Cosa non va? Cosa miglioreresti?"));
    outline->fill(text_);
    outline->setFixedHeight(textHeight);
    connect(text_, &QPlainTextEdit::textChanged, this, [this] { refresh(); });
    return outline;
}

QWidget* FeedbackView::makeButtons(QWidget& form) {
    auto* line = new QWidget(&form);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(makeButton(tr("Annulla"), onClose_, line));
    row->addStretch(1);
    send_ = makeButton(
        {}, [this] { send(); }, line);
    send_->setDefault(true);
    row->addWidget(send_);
    return line;
}

QWidget* FeedbackView::makeThanks() {
    auto* thanks = new QWidget(this);
    auto* column = new QVBoxLayout(thanks);
    column->setSpacing(12);
    auto* title = new Label(tr("Grazie davvero."), TextStyle::Title, primaryColour, thanks);
    auto* line = new Label(tr("Ogni feedback viene letto e orienta la prossima versione."), TextStyle::Body,
                           primaryColour, thanks);
    for (Label* words : {title, line}) words->setAlignment(Qt::AlignHCenter);
    close_ = makeButton(tr("Chiudi"), onClose_, thanks);
    column->addStretch(1);
    column->addWidget(new SymbolView(u"heart.fill"_s, heartSize, errorColour, thanks), 0, Qt::AlignHCenter);
    column->addWidget(title);
    column->addWidget(line);
    column->addWidget(close_, 0, Qt::AlignHCenter);
    column->addStretch(1);
    return thanks;
}

void FeedbackView::refresh() {
    send_->setText(sending_ ? tr("Invio…") : tr("Invia feedback"));
    send_->setEnabled(!sending_ && !Text::trimmedBlanks(text_->toPlainText()).isEmpty());
    errorLine_->setText(error_.value_or(QString()));
    errorLine_->setVisible(error_.has_value());
}

void FeedbackView::send() {
    sending_ = true;
    error_.reset();
    refresh();
    request_ = sendFeedback({rating_->rating(), text_->toPlainText(), email_->text()}, lifetime_.token(),
                            [this](bool success) { answered(success); });
}

void FeedbackView::answered(bool success) {
    sending_ = false;
    if (success) {
        Config::set(Settings::feedbackGiven, true);
        Log::info(u"feedback inviato (rating %1)"_s.arg(rating_->rating()));
        pages_->setCurrentIndex(1);
        close_->setDefault(true);
        close_->setFocus();
    } else {
        error_ = tr("Invio non riuscito — controlla la connessione e riprova.");
    }
    refresh();
    // On a small screen the form is longer than the window. Later: the line has no place yet.
    if (error_) QTimer::singleShot(0, this, [this] { page_->ensureWidgetVisible(errorLine_); });
}

}  // namespace parlivo
