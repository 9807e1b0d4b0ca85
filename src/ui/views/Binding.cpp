#include "ui/views/Binding.h"

#include "settings/Config.h"

#include <algorithm>
#include <limits>

namespace parlivo {

Binding<bool> storedFlag(const QString& key, bool absent) {
    return {.get = [=] { return Config::boolean(key, absent); },
            .set = [=](bool value) { Config::set(key, value); }};
}

Binding<QString> storedText(const QString& key, const QString& absent) {
    return {.get = [=] { return Config::string(key, absent); },
            .set = [=](const QString& value) { Config::set(key, value); }};
}

Binding<int> storedNumber(const QString& key, int absent) {
    using Limits = std::numeric_limits<int>;
    return {.get =
                [=] {
                    const qint64 value = Config::integer(key, absent);
                    return static_cast<int>(std::clamp<qint64>(value, Limits::min(), Limits::max()));
                },
            .set = [=](int value) { Config::set(key, value); }};
}

}  // namespace parlivo
