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
    return {.name = text(info.name),
            .description = text(info.description),
            .monitoredSink = text(info.monitor_of_sink_name),
            .pluggedIn = !empty,
            .sampleSpec = info.sample_spec,
            .channelMap = info.channel_map};
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

/// What the server says of its sources; nullopt if it does not answer before `end`.
struct Answer {
    SoundDefaults defaults;
    std::vector<SoundSource> sources;
};
std::optional<Answer> ask(const PulseConnection& connection, Clock::TimePoint end) {
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
    return Answer{std::move(query.defaults), std::move(query.sources)};
}

}  // namespace

std::optional<SoundSource> findMicrophone(const PulseConnection& connection, Clock::TimePoint end,
                                          const std::string& wanted) {
    auto answer = ask(connection, end);
    if (!answer) return {};
    if (const char* named = std::getenv("PULSE_SOURCE")) {
        answer->defaults.source = named;
        answer->defaults.sourceChosenBy = SoundDefaults::ChosenBy::User;
    }
    return chooseMicrophone(answer->sources, answer->defaults, wanted);
}

std::vector<Microphone> PulseAudioInput::microphones() {
    if (microphone_.serverHangs()) return {};
    const auto end = Clock::now() + MicrophoneReports::answerLimit;
    const auto connection = PulseConnection::open(end);
    const auto answer = connection ? ask(*connection, end) : std::nullopt;
    if (!answer) return {};
    std::vector<Microphone> found;
    for (const SoundSource& source : microphonesAmong(answer->sources))
        found.push_back({QString::fromStdString(source.name), QString::fromStdString(source.description)});
    return found;
}

std::unique_ptr<AudioCapture> PulseAudioInput::open() {
    if (microphone_.serverHangs()) return nullptr;
    const auto end = Clock::now() + MicrophoneReports::answerLimit;
    auto connection = PulseConnection::open(end);
    const auto source =
        connection ? findMicrophone(*connection, end, microphone_.chosenSource()) : std::nullopt;
    if (source) return std::make_unique<PulseCapture>(std::move(connection), *source, microphone_);
    if (Clock::now() >= end) microphone_.reportSilence();
    return nullptr;
}

}  // namespace parlivo
