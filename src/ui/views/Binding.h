// SPDX-License-Identifier: MIT
#pragma once

#include "settings/Settings.h"

#include <QString>

#include <functional>

namespace parlivo {

/// A value that a control shows and changes. Every read takes the current value; nothing is cached.
template <typename Value>
struct Binding {
    std::function<Value()> get;
    std::function<void(const Value&)> set;
};

/// A setting as a control's value. Every change is stored at once. An integer is held within an int's range.
Binding<bool> bindingTo(const Setting<bool>& setting);
Binding<int> bindingTo(const Setting<qint64>& setting);
Binding<QString> bindingTo(const Setting<QString>& setting);
/// The stored word, also one that the setting does not know.
template <Enumeration T>
Binding<QString> bindingTo(const Setting<T>& setting) {
    return bindingTo(Setting<QString>{setting.key, wordOf(setting.absent)});
}

}  // namespace parlivo
