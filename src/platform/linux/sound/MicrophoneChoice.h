// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/channelmap.h>
#include <pulse/sample.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace parlivo {

/// What the sound server says of one source.
struct SoundSource {
    std::string name;
    std::string description;    ///< what the server shows to its user
    std::string monitoredSink;  ///< the sink whose sound this source repeats; empty for a microphone
    bool pluggedIn = true;      ///< false when the server knows that nothing is in the socket
    pa_sample_spec sampleSpec{};
    pa_channel_map channelMap{};
    bool askedByName = false;  ///< the user chose it in this program: the server must not choose another

    bool isMonitor() const { return !monitoredSink.empty(); }
};

/// The server's present defaults.
struct SoundDefaults {
    enum class ChosenBy {
        Server,  ///< as far as it tells: it does not say what its user chose
        User,    ///< named in the environment
    };

    std::string source;
    std::string sink;
    ChosenBy sourceChosenBy = ChosenBy::Server;
};

/// The default source, if it may be taken for a microphone. nullopt if there is no default source or it has
/// no rate or channels.
///
/// A source that repeats what a sink plays is no microphone. But servers fall back on one: where no
/// microphone is plugged in, the default source is the monitor of the default sink. Only that one is refused,
/// and only if the user did not name it; any other monitor is the default because the user made it so.
std::optional<SoundSource> chooseMicrophone(std::span<const SoundSource> sources,
                                            const SoundDefaults& defaults);

/// The source named `wanted`, asked for by its name, if it is there and delivers; else, and if `wanted` is
/// empty, chooseMicrophone().
std::optional<SoundSource> chooseMicrophone(std::span<const SoundSource> sources,
                                            const SoundDefaults& defaults, const std::string& wanted);

/// The sources that a user would call microphones: those that repeat no sink.
std::vector<SoundSource> microphonesAmong(std::span<const SoundSource> sources);

}  // namespace parlivo
