// SPDX-License-Identifier: MIT
#pragma once

#include "app/Collaborators.h"
#include "app/DictationMark.h"
#include "app/ErrorNotices.h"
#include "app/PipelineStep.h"
#include "app/State.h"
#include "app/menu/StatusMenu.h"
#include "audio/AudioRecorder.h"
#include "audio/overlay/DictationOverlay.h"
#include "input/HotKeyManager.h"
#include "platform/RemoteControl.h"
#include "support/Clock.h"
#include "support/Lifetime.h"
#include "support/SerialQueue.h"

#include <QObject>

#include <optional>

namespace parlivo {

/// The application: owns the state machine of a dictation, the status item and every collaborator. Main
/// thread; the pipeline step runs on the pipeline queue and reports on the main thread.
class AppDelegate : public QObject {
    Q_OBJECT

  public:
    /// `now` is the recorder's clock.
    explicit AppDelegate(Collaborators collaborators = Collaborators::real(),
                         AudioRecorder::Now now = &Clock::now);
    ~AppDelegate() override;
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Start-up; once, before the event loop.
    void applicationDidFinishLaunching();
    /// Shut-down; once, after the event loop. Everything that waits is interrupted, the engines are stopped,
    /// no recording stays on disk.
    void applicationWillTerminate();

    /// Only in `idle`.
    void startRecording();
    /// Only in `recording`.
    void stopAndProcess();
    /// A command from outside: a second start, a script on the bus.
    void perform(RemoteCommand command);

    /// Shows the first 80 characters of a message in the menu's first line, for 8 seconds, and all of it in a
    /// notification.
    void showError(const QString& message, Remedy remedy = Remedy::OpenLog);

    State state() const { return state_; }
    /// The current first line of the menu.
    QString statusLine() const;

  private:
    void setupStatusItem();
    void updateUI();
    void menuWillOpen();
    void showUpdate();
    void requestPermissions();
    void setState(State state);

    void installHotKey();
    void showHotKeyStatus();
    QString titleOf(State state) const;
    enum class FirstRun { OnScreen, PutOff };
    void showPutOffFirstRun(FirstRun firstRun);
    void showSettings();
    void keyDown(DictationMode mode);
    void keyUp(DictationMode mode);
    void toggle();
    void warmUp();
    void tellOfLostDictation();
    void chooseMicrophone();

    PipelineStep::Observer stepObserver();
    void countDictation();

    const Collaborators collaborators_;
    ErrorNotices notices_;
    StatusMenu* menu_ = nullptr;  ///< a child, from setupStatusItem() on
    AudioRecorder recorder_;
    HotKeyManager hotKey_;
    DictationOverlay overlay_;
    State state_ = State::idle;
    std::optional<DictationMark> mark_;       ///< except in `idle`
    FirstRun firstRun_ = FirstRun::OnScreen;  ///< which is also where there is none
    const Lifetime lifetime_;
    PipelineStep step_;
    /// The last member: its destructor waits for the running step, which uses the others.
    SerialQueue pipelineQueue_{QStringLiteral("parlivo.pipeline")};
};

}  // namespace parlivo
