// SPDX-License-Identifier: MIT
#include "update/feedback/FeedbackWindowController.h"

#include "settings/Config.h"
#include "ui/views/Dialogs.h"
#include "ui/views/Windows.h"
#include "update/feedback/FeedbackView.h"

#include <QDateTime>
#include <QDialog>
#include <QVBoxLayout>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize windowSize{440, 400};
constexpr qint64 dictationsBeforeAsking = 20;
constexpr qint64 secondsBetweenInvitations = 30LL * 24 * 60 * 60;

std::unique_ptr<QWidget> buildWindow() {
    auto window =
        std::make_unique<QDialog>(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                               Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    window->setWindowTitle(FeedbackWindowController::tr("Il tuo parere su Parlivo"));
    fixSize(*window, windowSize);
    auto* column = new QVBoxLayout(window.get());
    column->setContentsMargins(20, 16, 20, 16);
    column->addWidget(new FeedbackView([dialog = window.get()] { dialog->close(); }, window.get()));
    centreOnScreen(*window);
    return window;
}

bool isInvitationDue() {
    if (Config::get(Settings::feedbackGiven)) return false;
    if (Config::get(Settings::dictationCount) < dictationsBeforeAsking) return false;
    const auto lastShown = Config::get(Settings::feedbackPromptLastShown);
    return !lastShown || lastShown->secsTo(QDateTime::currentDateTimeUtc()) >= secondsBetweenInvitations;
}

}  // namespace

FeedbackWindowController::FeedbackWindowController() = default;

FeedbackWindowController::~FeedbackWindowController() = default;

void FeedbackWindowController::show() {
    if (!window_) window_ = buildWindow();
    bringToFront(*window_);
}

void FeedbackWindowController::maybePromptAfterDictation() {
    if (!isInvitationDue()) return;
    // Stored before the alert is shown, so that a dismissed invitation counts too.
    Config::set(Settings::feedbackPromptLastShown, QDateTime::currentDateTimeUtc());
    const int chosen = Dialogs::current().ask(
        {.message = tr("Come ti trovi con Parlivo?"),
         .informativeText = tr(
             "La tua opinione guida le prossime versioni. Due righe su cosa va e cosa miglioreresti valgono oro."),
         .buttons = {tr("Dì la tua"), tr("Non ora")},
         .arrival = Alert::Arrival::Unbidden});
    if (chosen == 0) show();
}

}  // namespace parlivo
