// SPDX-License-Identifier: MIT
#include "input/HotKeyTitle.h"

#include "input/HotKeyChoice.h"
#include "platform/Platform.h"

namespace parlivo {

namespace {

constexpr auto blank = QLatin1String("%1");

/// What a layout prints there in the country of the keyboard's inventors; for sessions that do not tell.
constexpr auto usualGrave = QLatin1String("`");

}  // namespace

QString hotKeyTitle(const Preset& preset) {
    QString title = preset.label;
    if (!title.contains(blank)) return title;
    const QString printed = Platform::current().hotKeys().keyLabel(preset.keyCode);
    return title.replace(blank, printed.isEmpty() ? QString(usualGrave) : printed);
}

QString hotKeyTitle() {
    return hotKeyTitle(HotKeyChoice::current());
}

}  // namespace parlivo
