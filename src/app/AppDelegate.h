#pragma once

#include "app/Collaborators.h"
#include "app/State.h"
#include "app/menu/StatusMenu.h"
#include "audio/AudioRecorder.h"
#include "audio/overlay/DictationOverlay.h"
#include "input/HotKeyManager.h"
#include "platform/RemoteControl.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "support/Lifetime.h"
#include "support/ScopedFile.h"
#include "support/SerialQueue.h"

#include <QObject>

#include <memory>

namespace parlivo {

/// The application: owns the state machine of a dictation, the status item and every collaborator. Main
/// thread, but for the pipeline step, which runs on the pipeline queue and reports back through the main
/// queue.
class AppDelegate : public QObject {
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

    /// A passing message in the menu's first line: the first 80 characters, for 8 seconds.
    void showError(const QString& message);

    State state() const { return state_; }
    /// The menu's first line as it stands.
    QString statusLine() const;
    const StatusMenu* statusMenu() const { return menu_.get(); }

    /// Whether a transcript says that nobody spoke: it contains one of the recogniser's markers anywhere.
    static bool isBlankMarker(const QString& transcript);

  private:
    void setupStatusItem();
    void updateUI();
    void menuWillOpen();
    void requestPermissions();
    void setState(State state);

    void installHotKey();
    void keyDown();
    void keyUp();
    void toggle();
    void warmUp();

    // The pipeline step, on the pipeline queue.
    void process(ScopedFile& recording);
    QString transcribe(ScopedFile& recording);
    void deliver(const QString& raw);
    void copyInsteadOfTyping(const QString& text);
    void inject(const QString& text);
    void fail(const Error& error);
    /// Back to idle on the main thread, the overlay gone, with a message.
    void giveUp(const QString& message);
    void countDictation();
    void onMain(std::function<void()> job);

    const Collaborators ask_;
    std::unique_ptr<StatusMenu> menu_;
    AudioRecorder recorder_;
    HotKeyManager hotKey_;
    DictationOverlay overlay_;
    State state_ = State::idle;
    Lifetime lifetime_;
    /// Last: its end waits for the running step, which uses everything above.
    SerialQueue pipelineQueue_{QStringLiteral("parlivo.pipeline")};
};

}  // namespace parlivo
