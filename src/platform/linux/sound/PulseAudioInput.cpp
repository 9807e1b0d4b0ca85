// SPDX-License-Identifier: MIT
#include "platform/linux/sound/PulseAudioInput.h"

#include "platform/linux/sound/PulseCapture.h"

#include <cstdlib>
#include <utility>
#include <vector>

namespace parlivo {

namespace {

/// The answers of the server about its sources, filled in by its callbacks.
struct SourceQuery {
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
    auto& query = *static_cast<SourceQuery*>(pointer);
    if (info) query.defaults = {text(info->default_source_name), text(info->default_sink_name)};
    query.defaultsKnown = true;
    query.connection.wake();
}

SoundSource described(const pa_source_info& info) {
    const bool empty = info.active_port && info.active_port->available == PA_PORT_AVAILABLE_NO;
    return {text(info.name), text(info.monitor_of_sink_name), !empty, info.sample_spec, info.channel_map};
}

void takeSource(pa_context*, const pa_source_info* info, int end, void* pointer) {
    auto& query = *static_cast<SourceQuery*>(pointer);
    if (end == 0) {
        query.sources.push_back(described(*info));
        return;
    }
    query.sourcesKnown = true;
    query.connection.wake();
}

void cancel(const PulseOperationHandle& operation) {
    if (operation) pa_operation_cancel(operation.get());
}

}  // namespace

std::optional<SoundSource> findMicrophone(const PulseConnection& connection, Clock::TimePoint end) {
    const PulseConnection::Lock lock(connection);
    SourceQuery query{connection, {}, {}};
    // Both questions at once: one round trip to the server.
    const PulseOperationHandle defaults(
        pa_context_get_server_info(connection.context(), &takeDefaults, &query));
    const PulseOperationHandle sources(
        pa_context_get_source_info_list(connection.context(), &takeSource, &query));
    const bool answered =
        connection.waitUntil(end, [&] { return query.complete() || !connection.isAlive(); });
    cancel(defaults);
    cancel(sources);
    if (!answered || !query.complete()) return {};
    if (const char* named = std::getenv("PULSE_SOURCE")) {
        query.defaults.source = named;
        query.defaults.sourceChosenBy = SoundDefaults::ChosenBy::User;
    }
    return chooseMicrophone(query.sources, query.defaults);
}

std::unique_ptr<AudioCapture> PulseAudioInput::open() {
    if (microphone_.serverHangs()) return nullptr;
    const auto end = Clock::now() + MicrophoneReports::answerLimit;
    auto connection = PulseConnection::open(end);
    const auto source = connection ? findMicrophone(*connection, end) : std::nullopt;
    if (source) return std::make_unique<PulseCapture>(std::move(connection), *source, microphone_);
    if (Clock::now() >= end) microphone_.reportSilence();
    return nullptr;
}

}  // namespace parlivo
