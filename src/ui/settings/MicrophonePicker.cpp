// SPDX-License-Identifier: MIT
#include "ui/settings/MicrophonePicker.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "support/MainQueue.h"

#include <algorithm>

namespace parlivo {

using namespace Qt::StringLiterals;

MicrophonePicker::MicrophonePicker(Form& form, QObject* parent)
    : QObject(parent), picker_(&form.picker(tr("Microfono"), {}, bindingTo(Settings::microphone))) {
    showMicrophones({});
}

void MicrophonePicker::refresh() {
    const auto ask = [this, owner = lifetime_.token()](const StopToken&) {
        const auto found = Platform::current().audioInput().microphones();
        MainQueue::async(owner, [this, found] { showMicrophones(found); });
    };
    request_ = std::make_unique<Worker>(u"parlivo.sources"_s, ask);
}

void MicrophonePicker::showMicrophones(const std::vector<Microphone>& microphones) {
    std::vector<Option> options{{tr("Quello scelto dal sistema"), {}}};
    for (const Microphone& microphone : microphones) options.push_back({microphone.name, microphone.id});
    const QString chosen = Config::get(Settings::microphone);
    const bool listed = std::ranges::find(options, chosen, &Option::value) != options.end();
    if (!listed) options.push_back({tr("%1 (non collegato)").arg(chosen), chosen});
    picker_->setOptions(options);
}

}  // namespace parlivo
