// SPDX-License-Identifier: MIT
#pragma once

#include "app/Collaborators.h"
#include "app/ErrorNotices.h"
#include "support/Error.h"
#include "support/Lifetime.h"
#include "support/ScopedFile.h"

#include <QCoreApplication>
#include <QString>

#include <functional>

namespace parlivo {

/// The pipeline step of a dictation: everything slow between the recording's end and the text at the cursor.
/// Lives on the main thread, runs on the pipeline queue.
class PipelineStep {
    Q_DECLARE_TR_FUNCTIONS(parlivo::PipelineStep)

  public:
    /// How far the step has come. Called on the main thread, in this order; a step ends with exactly one of
    /// `onDone` and `onFailure`.
    struct Observer {
        std::function<void()> onCleaning;
        std::function<void()> onTyping;
        std::function<void()> onDone;  ///< the text was injected
        /// With what the user is told, and what helps.
        std::function<void(const QString& message, Remedy remedy)> onFailure;
    };

    /// `collaborators` outlives this object.
    PipelineStep(const Collaborators& collaborators, Observer observer);

    /// Blocks until the text is injected or the step has failed; the recording is deleted in any case. On the
    /// pipeline queue.
    void run(ScopedFile& recording);

    /// Whether a transcript means "no speech": it contains one of the recogniser's markers anywhere.
    static bool isBlankMarker(const QString& transcript);

  private:
    QString transcribe(ScopedFile& recording);
    void deliver(const QString& raw);
    void copyInsteadOfTyping(const QString& text);
    void inject(const QString& text);
    void fail(const QString& message, Remedy remedy);
    void onMain(std::function<void()> job);

    const Collaborators& collaborators_;
    const Observer observer_;
    Lifetime lifetime_;
};

}  // namespace parlivo
