#pragma once

#include <QString>

#include <functional>

namespace parlivo {

/// A value that a control shows and changes. Reading is always fresh; nothing is kept between.
template <typename Value>
struct Binding {
    std::function<Value()> get;
    std::function<void(const Value&)> set;
};

/// A setting, with what it counts as while it was never written. Every change is stored at once.
Binding<bool> storedFlag(const QString& key, bool absent);
Binding<QString> storedText(const QString& key, const QString& absent);
Binding<int> storedNumber(const QString& key, int absent);

}  // namespace parlivo
