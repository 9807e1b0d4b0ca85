// SPDX-License-Identifier: MIT
#include "ui/SessionHints.h"

#include "platform/Platform.h"
#include "settings/Log.h"
#include "support/Clock.h"
#include "ui/views/Form.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace parlivo {

namespace {

using namespace std::chrono_literals;

/// No event tells of what the user does in a terminal or in the desktop's own settings.
constexpr auto pollInterval = 1s;
constexpr int spacing = 6;

bool saySame(const std::vector<SessionHint>& one, const std::vector<SessionHint>& other) {
    return std::ranges::equal(one, other, [](const SessionHint& a, const SessionHint& b) {
        return a.text == b.text && a.lines == b.lines && a.actionLabel == b.actionLabel;
    });
}

}  // namespace

SessionHints::SessionHints(SessionHint::Topic topic, Look look, QWidget& page)
    : QWidget(&page), topic_(topic), look_(std::move(look)), column_(new QVBoxLayout(this)) {
    column_->setContentsMargins(look_.margins);
    column_->setSpacing(2 * spacing);
    hide();
    connect(&poll_, &QTimer::timeout, this, [this] { refresh(); });
    refresh();
    // The page's, because this is hidden itself as long as there are none.
    page.installEventFilter(this);
}

bool SessionHints::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show) {
        poll_.start(Clock::scaled(pollInterval));
        refresh();
    } else if (event->type() == QEvent::Hide) {
        poll_.stop();
    }
    return QWidget::eventFilter(watched, event);
}

void SessionHints::refresh() {
    auto hints = Platform::current().sessionHints();
    std::erase_if(hints, [this](const SessionHint& hint) { return hint.topic != topic_; });
    if (saySame(hints, hints_)) return;
    hints_ = std::move(hints);
    rebuild();
    Q_EMIT changed();
}

void SessionHints::rebuild() {
    // Deleted later, because one of their buttons may lead here.
    for (QWidget* block : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        block->hide();
        block->deleteLater();
    }
    while (const auto* const item = column_->takeAt(0)) delete item;
    for (const SessionHint& hint : hints_) column_->addWidget(makeBlock(hint));
    setVisible(!hints_.empty());
}

QWidget* SessionHints::makeBlock(const SessionHint& hint) {
    auto* block = new QWidget(this);
    auto* column = new QVBoxLayout(block);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing);
    auto* text = new Label(hint.text, look_.style, look_.colour, block);
    text->setAlignment(look_.alignment);
    column->addWidget(text);
    if (!hint.lines.isEmpty()) {
        auto* lines = new Label(hint.lines, look_.style, look_.colour, block);
        lines->setFont(monospacedFont(look_.style));
        lines->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        lines->setAlignment(look_.alignment);
        column->addWidget(lines);
    }
    column->addWidget(makeButtons(hint, block));
    block->show();
    return block;
}

QWidget* SessionHints::makeButtons(const SessionHint& hint, QWidget* parent) {
    auto* buttons = new QWidget(parent);
    auto* row = new QHBoxLayout(buttons);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing);
    if (look_.alignment == Qt::AlignHCenter) row->addStretch(1);
    if (!hint.lines.isEmpty()) {
        const auto copy = [lines = hint.lines] {
            if (!Platform::current().pasteboard().setText(lines, Pasteboard::History::Keep))
                Log::info(QStringLiteral("le righe da copiare NON sono negli appunti"));
        };
        row->addWidget(makeButton(tr("Copia"), copy, buttons));
    }
    if (hint.action) {
        const auto act = [this, action = hint.action] {
            action();
            refresh();
        };
        row->addWidget(makeButton(hint.actionLabel, act, buttons));
    }
    row->addStretch(1);
    return buttons;
}

}  // namespace parlivo
