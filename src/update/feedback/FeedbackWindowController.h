// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QWidget>

#include <memory>

namespace parlivo {

/// The one feedback window, and the occasional invitation to it. Main thread.
class FeedbackWindowController {
    Q_DECLARE_TR_FUNCTIONS(parlivo::FeedbackWindowController)

  public:
    FeedbackWindowController();
    ~FeedbackWindowController();
    FeedbackWindowController(const FeedbackWindowController&) = delete;
    FeedbackWindowController& operator=(const FeedbackWindowController&) = delete;

    /// Builds the window on the first call, then brings it to the front with its form as it was left.
    void show();
    QWidget* window() const { return window_.get(); }

    /// After each dictation: invites the user from the 20th dictation on, at most every 30 days, and never
    /// again after feedback was sent. Waits for the answer.
    void maybePromptAfterDictation();

  private:
    std::unique_ptr<QWidget> window_;
};

}  // namespace parlivo
