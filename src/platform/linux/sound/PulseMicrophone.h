// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Permissions.h"
#include "platform/linux/sound/MicrophoneReports.h"
#include "support/Clock.h"
#include "support/Lifetime.h"
#include "support/SerialQueue.h"

#include <QPointer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace parlivo {

/// Whether the sound server lets the program hear, and whether it answers at all.
///
/// The server is asked on a thread of this object's own, so that no caller waits for a server that hangs; its
/// last answer is available at once. Sound servers ask nobody for permission: capture counts as granted when
/// a server answers, has a microphone, and has not refused the last recording.
class PulseMicrophone : public MicrophoneReports {
  public:
    /// A server that hangs is asked again after this, until it answers.
    static constexpr std::chrono::milliseconds retryInterval{1000};

    PulseMicrophone() = default;
    /// Waits for the question that is under way, for answerLimit at most.
    ~PulseMicrophone() override;
    PulseMicrophone(const PulseMicrophone&) = delete;
    PulseMicrophone& operator=(const PulseMicrophone&) = delete;

    /// The last answer, at once; NotAsked before the first one. Asks anew. Main thread.
    MicrophoneStatus status();
    /// `changed` is called on the main thread whenever the answer differs from the one before, until `owner`
    /// is gone. Main thread.
    void observe(const QObject* owner, std::function<void(MicrophoneStatus)> changed);
    /// Asks anew and answers on this object's thread; at once with false while the server hangs. No answer
    /// comes when this object ends meanwhile. Any thread.
    void request(MicrophoneCheck check, const Permissions::Answer& answer);

    /// Whether the server was silent when it was last asked. It is asked again and again until it answers.
    /// Any thread.
    bool serverHangs() const override { return hangs_; }
    /// Somebody else has waited for the server in vain. Any thread.
    void reportSilence() override;
    /// How a recording was answered. Any thread.
    void reportRecording(bool granted) override { refused_ = !granted; }

    /// Any thread.
    std::string chosenSource() const override;
    void chooseSource(std::string name) override;

  private:
    struct Observer {
        QPointer<const QObject> owner;
        std::function<void(MicrophoneStatus)> changed;
    };

    void enqueue(SerialQueue::Job job);
    void refresh();
    void askUntilAnswered();
    MicrophoneStatus ask();
    void publish(MicrophoneStatus status);

    std::vector<Observer> observers_;  // main thread
    Lifetime lifetime_;                // main thread
    std::atomic<MicrophoneStatus> status_ = MicrophoneStatus::NotAsked;
    std::atomic<bool> hangs_ = false;
    std::atomic<bool> refused_ = false;  // the last recording
    std::atomic<bool> refreshing_ = false;
    Clock::Signal ending_;
    mutable std::mutex mutex_;
    std::string chosenSource_;            // under mutex_
    bool ended_ = false;                  // under mutex_
    std::unique_ptr<SerialQueue> queue_;  // under mutex_; made at the first question
};

}  // namespace parlivo
