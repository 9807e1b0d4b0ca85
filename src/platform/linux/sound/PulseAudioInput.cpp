#include "platform/linux/sound/PulseAudioInput.h"

#include "platform/linux/sound/PulseCapture.h"

#include <cstdlib>
#include <utility>
#include <vector>

namespace parlivo {

namespace {

/// The answers to what is asked of the server, filled by its callbacks.
struct Survey {
    const PulseConnection& connection;
    SoundDefaults defaults;
    std::vector<SoundSource> sources;
    bool defaultsKnown = false;
    bool sourcesKnown = false;

    bool complete() const { return defaultsKnown && sourcesKnown; }
};

std::string text(const char* pointer) {
    return pointer ? pointer : "";
}

void takeDefaults(pa_context*, const pa_server_info* info, void* pointer) {
    auto& survey = *static_cast<Survey*>(pointer);
    if (info) survey.defaults = {text(info->default_source_name), text(info->default_sink_name)};
    survey.defaultsKnown = true;
    survey.connection.wake();
}

SoundSource described(const pa_source_info& info) {
    const bool empty = info.active_port && info.active_port->available == PA_PORT_AVAILABLE_NO;
    return {text(info.name), text(info.monitor_of_sink_name), !empty, info.sample_spec, info.channel_map};
}

void takeSource(pa_context*, const pa_source_info* info, int end, void* pointer) {
    auto& survey = *static_cast<Survey*>(pointer);
    if (end == 0) {
        survey.sources.push_back(described(*info));
        return;
    }
    survey.sourcesKnown = true;
    survey.connection.wake();
}

void cancel(const PulseOperationHandle& operation) {
    if (operation) pa_operation_cancel(operation.get());
}

}  // namespace

std::optional<SoundSource> findMicrophone(const PulseConnection& connection, Clock::TimePoint end) {
    const PulseConnection::Lock lock(connection);
    Survey survey{connection, {}, {}};
    // Both questions at once: one trip to the server.
    const PulseOperationHandle defaults(
        pa_context_get_server_info(connection.context(), &takeDefaults, &survey));
    const PulseOperationHandle sources(
        pa_context_get_source_info_list(connection.context(), &takeSource, &survey));
    const bool answered =
        connection.waitUntil(end, [&] { return survey.complete() || !connection.isAlive(); });
    cancel(defaults);
    cancel(sources);
    if (!answered || !survey.complete()) return {};
    if (const char* named = std::getenv("PULSE_SOURCE")) survey.defaults.source = named;
    return chooseMicrophone(survey.sources, survey.defaults);
}

std::unique_ptr<AudioCapture> PulseAudioInput::open() {
    const auto end = Clock::now() + answerLimit;
    auto connection = PulseConnection::open(end);
    if (!connection) return nullptr;
    const auto microphone = findMicrophone(*connection, end);
    if (!microphone) return nullptr;
    return std::make_unique<PulseCapture>(std::move(connection), *microphone);
}

}  // namespace parlivo
