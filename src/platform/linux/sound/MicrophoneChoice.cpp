// SPDX-License-Identifier: MIT
#include "platform/linux/sound/MicrophoneChoice.h"

#include <algorithm>
#include <iterator>

namespace parlivo {

namespace {

bool isLiveMicrophone(const SoundSource& source) {
    return !source.isMonitor() && source.pluggedIn;
}

bool isServersFallback(const SoundSource& source, std::span<const SoundSource> all,
                       const SoundDefaults& defaults) {
    return defaults.sourceChosenBy == SoundDefaults::ChosenBy::Server && source.isMonitor() &&
           source.monitoredSink == defaults.sink && std::none_of(all.begin(), all.end(), isLiveMicrophone);
}

bool delivers(const SoundSource& source) {
    return pa_sample_spec_valid(&source.sampleSpec) != 0;
}

}  // namespace

std::optional<SoundSource> chooseMicrophone(std::span<const SoundSource> sources,
                                            const SoundDefaults& defaults) {
    const auto found = std::find_if(sources.begin(), sources.end(), [&](const SoundSource& source) {
        return source.name == defaults.source;
    });
    if (found == sources.end() || !delivers(*found)) return {};
    if (isServersFallback(*found, sources, defaults)) return {};
    return *found;
}

std::optional<SoundSource> chooseMicrophone(std::span<const SoundSource> sources,
                                            const SoundDefaults& defaults, const std::string& wanted) {
    const auto found = std::ranges::find(sources, wanted, &SoundSource::name);
    const bool mayChoose = !wanted.empty() && defaults.sourceChosenBy == SoundDefaults::ChosenBy::Server;
    if (!mayChoose || found == sources.end() || !delivers(*found)) return chooseMicrophone(sources, defaults);
    SoundSource chosen = *found;
    chosen.askedByName = true;
    return chosen;
}

std::vector<SoundSource> microphonesAmong(std::span<const SoundSource> sources) {
    std::vector<SoundSource> found;
    std::ranges::copy_if(sources, std::back_inserter(found),
                         [](const SoundSource& source) { return !source.isMonitor() && delivers(source); });
    return found;
}

}  // namespace parlivo
