#include "platform/linux/sound/PulseMicrophone.h"

#include "platform/linux/sound/PulseAudioInput.h"

namespace parlivo {

namespace {

bool grantsCapture() {
    const auto capture = PulseAudioInput().open();
    if (!capture) return false;
    try {
        capture->start([](std::span<const float>, std::size_t) {}, [] {});
    } catch (const Error&) {
        return false;
    }
    return true;
}

}  // namespace

MicrophoneStatus PulseMicrophone::status() const {
    const auto end = Clock::now() + PulseAudioInput::answerLimit;
    const auto connection = PulseConnection::open(end);
    const bool heard = connection && findMicrophone(*connection, end);
    return heard ? MicrophoneStatus::Authorised : MicrophoneStatus::Denied;
}

void PulseMicrophone::request(const Permissions::Answer& answer) const {
    answer(grantsCapture());
}

}  // namespace parlivo
