// SPDX-License-Identifier: MIT
#include "ui/views/Binding.h"

#include "settings/Config.h"

#include <algorithm>
#include <limits>

namespace parlivo {

Binding<bool> bindingTo(const Setting<bool>& setting) {
    return {.get = [=] { return Config::get(setting); },
            .set = [=](bool value) { Config::set(setting, value); }};
}

Binding<int> bindingTo(const Setting<qint64>& setting) {
    using Limits = std::numeric_limits<int>;
    return {.get =
                [=] {
                    const qint64 value = Config::get(setting);
                    return static_cast<int>(std::clamp<qint64>(value, Limits::min(), Limits::max()));
                },
            .set = [=](int value) { Config::set(setting, value); }};
}

Binding<QString> bindingTo(const Setting<QString>& setting) {
    return {.get = [=] { return Config::get(setting); },
            .set = [=](const QString& value) { Config::set(setting, value); }};
}

}  // namespace parlivo
