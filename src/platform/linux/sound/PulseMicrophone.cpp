// SPDX-License-Identifier: MIT
#include "platform/linux/sound/PulseMicrophone.h"

#include "platform/linux/sound/PulseAudioInput.h"
#include "support/Error.h"
#include "support/MainQueue.h"

#include <utility>
#include <vector>

namespace parlivo {

namespace {

/// Records for a moment, which makes a server that guards the microphone decide.
bool grantsRecording(PulseMicrophone& microphone) {
    const auto capture = PulseAudioInput(microphone).open();
    if (!capture) return false;
    try {
        capture->start([](std::span<const float>, std::size_t) {}, [] {});
    } catch (const Error&) {
        return false;
    }
    return true;
}

}  // namespace

PulseMicrophone::~PulseMicrophone() {
    ending_.raise();
    std::unique_ptr<SerialQueue> queue;
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        queue = std::move(queue_);
    }
}

std::string PulseMicrophone::chosenSource() const {
    const std::lock_guard lock(mutex_);
    return chosenSource_;
}

void PulseMicrophone::chooseSource(std::string name) {
    const std::lock_guard lock(mutex_);
    chosenSource_ = std::move(name);
}

void PulseMicrophone::enqueue(SerialQueue::Job job) {
    const std::lock_guard lock(mutex_);
    if (ended_) return;
    if (!queue_) queue_ = std::make_unique<SerialQueue>(QStringLiteral("parlivo.microphone"));
    queue_->async(std::move(job));
}

MicrophoneStatus PulseMicrophone::status() {
    refresh();
    return status_;
}

void PulseMicrophone::observe(const QObject* owner, std::function<void(MicrophoneStatus)> changed) {
    std::erase_if(observers_, [](const Observer& observer) { return !observer.owner; });
    observers_.push_back({owner, std::move(changed)});
}

void PulseMicrophone::request(MicrophoneCheck check, const Permissions::Answer& answer) {
    if (hangs_) {
        answer(false);
        return;
    }
    enqueue([this, check, answer] {
        if (hangs_) {
            answer(false);
            return;
        }
        const bool records = check == MicrophoneCheck::WithoutRecording || grantsRecording(*this);
        const MicrophoneStatus status = ask();
        publish(status);
        answer(records && status == MicrophoneStatus::Authorised);
        if (hangs_) refresh();
    });
}

void PulseMicrophone::reportSilence() {
    hangs_ = true;
    refresh();
}

void PulseMicrophone::refresh() {
    if (refreshing_.exchange(true)) return;
    enqueue([this] { askUntilAnswered(); });
}

/// A job of its own for each question, so that requests are answered in between.
void PulseMicrophone::askUntilAnswered() {
    publish(ask());
    if (hangs_ && !ending_.waitUntil(Clock::now() + retryInterval) && !Clock::interrupted()) {
        enqueue([this] { askUntilAnswered(); });
    } else {
        refreshing_ = false;
    }
}

/// Looks without recording, so that asking often neither lights the microphone's lamp nor turns a headset
/// into a telephone.
MicrophoneStatus PulseMicrophone::ask() {
    const auto end = Clock::now() + answerLimit;
    const auto connection = PulseConnection::open(end);
    const bool present = connection && findMicrophone(*connection, end, chosenSource());
    hangs_ = !present && Clock::now() >= end;
    return present && !refused_ ? MicrophoneStatus::Authorised : MicrophoneStatus::Denied;
}

void PulseMicrophone::publish(MicrophoneStatus status) {
    if (status_.exchange(status) == status) return;
    MainQueue::async(lifetime_.token(), [this, status] {
        // By value: an observer may add another.
        for (const Observer& observer : std::vector(observers_))
            if (observer.owner) observer.changed(status);
    });
}

}  // namespace parlivo
