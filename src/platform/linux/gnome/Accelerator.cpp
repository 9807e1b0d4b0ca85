// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/Accelerator.h"

#include "platform/linux/desktop/KeyPositions.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>

namespace parlivo::gnome {

namespace {

/// GNOME's own name for the key left of "1".
constexpr auto aboveTab = QLatin1String("Above_Tab");

struct Modifier {
    HotKeyModifiers mask;
    const char* name;
};
/// The first name of each is the one that is written.
constexpr std::array modifierNames{
    Modifier{HotKeyModifier::control, "Control"}, Modifier{HotKeyModifier::option, "Alt"},
    Modifier{HotKeyModifier::shift, "Shift"},     Modifier{HotKeyModifier::command, "Super"},
    Modifier{HotKeyModifier::control, "Ctrl"},    Modifier{HotKeyModifier::control, "Ctl"},
    Modifier{HotKeyModifier::control, "Primary"}, Modifier{HotKeyModifier::option, "Mod1"},
    Modifier{HotKeyModifier::shift, "Shft"},      Modifier{HotKeyModifier::command, "Mod4"},
};
constexpr std::size_t writtenNames = 4;

/// What an American keyboard has at a position.
xkb_keysym_t symbolAt(std::uint32_t position) {
    const std::unique_ptr<xkb_context, void (*)(xkb_context*)> context(
        xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES), xkb_context_unref);
    const xkb_rule_names names{
        .rules = "evdev", .model = "pc105", .layout = "us", .variant = "", .options = ""};
    const std::unique_ptr<xkb_keymap, void (*)(xkb_keymap*)> keymap(
        xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS), xkb_keymap_unref);
    if (!keymap) return XKB_KEY_NoSymbol;
    const std::unique_ptr<xkb_state, void (*)(xkb_state*)> state(xkb_state_new(keymap.get()),
                                                                 xkb_state_unref);
    return xkb_state_key_get_one_sym(state.get(), position);
}

QString nameOf(xkb_keysym_t symbol) {
    std::array<char, 64> name{};
    return xkb_keysym_get_name(symbol, name.data(), name.size()) > 0 ? QString::fromLatin1(name.data())
                                                                     : QString();
}

bool printsSomething(xkb_keysym_t symbol) {
    return xkb_keysym_to_utf32(symbol) > U' ';
}

/// The modifiers that `accelerator` begins with, which are taken from it; nullopt for one that no hot key
/// has.
std::optional<HotKeyModifiers> takeModifiers(QString& accelerator) {
    HotKeyModifiers modifiers = 0;
    while (accelerator.startsWith(QLatin1Char('<'))) {
        const auto end = accelerator.indexOf(QLatin1Char('>'));
        const QString name = accelerator.mid(1, end - 1);
        const auto* const found = std::ranges::find_if(modifierNames, [&](const Modifier& modifier) {
            return name.compare(QLatin1String(modifier.name), Qt::CaseInsensitive) == 0;
        });
        if (end < 0 || found == modifierNames.end()) return std::nullopt;
        modifiers |= found->mask;
        accelerator.remove(0, end + 1);
    }
    return modifiers;
}

bool isKeyAt(const QString& name, std::uint32_t position) {
    if (name.startsWith(QLatin1String("0x"))) return name.toUInt(nullptr, 16) == position;
    const xkb_keysym_t symbol = symbolAt(position);
    if (name == aboveTab) return symbol == XKB_KEY_grave;
    return name.compare(nameOf(symbol), Qt::CaseInsensitive) == 0;
}

std::optional<std::uint32_t> positionOf(KeyCode key) {
    const auto code = KeyPositions::kernelCodeOf(key);
    return code ? std::optional(*code + KeyPositions::displayOffset) : std::nullopt;
}

}  // namespace

std::optional<QString> acceleratorOf(KeyCode key, HotKeyModifiers modifiers) {
    const auto position = positionOf(key);
    if (!position) return std::nullopt;
    QString accelerator;
    for (const auto& [mask, name] : std::span(modifierNames).first<writtenNames>()) {
        if ((modifiers & mask) != 0) accelerator += QLatin1Char('<') + QLatin1String(name) + QLatin1Char('>');
    }
    const xkb_keysym_t symbol = symbolAt(*position);
    const QString name = printsSomething(symbol) ? QString() : nameOf(symbol);
    return accelerator + (name.isEmpty() || symbol == XKB_KEY_NoSymbol
                              ? QStringLiteral("0x%1").arg(*position, 0, 16)
                              : name);
}

std::optional<QString> triggerOf(KeyCode key, HotKeyModifiers modifiers) {
    constexpr std::array names{
        Modifier{HotKeyModifier::control, "CTRL+"}, Modifier{HotKeyModifier::option, "ALT+"},
        Modifier{HotKeyModifier::shift, "SHIFT+"}, Modifier{HotKeyModifier::command, "LOGO+"}};
    const auto position = positionOf(key);
    const QString symbol = position ? nameOf(symbolAt(*position)) : QString();
    if (symbol.isEmpty() || symbol == QLatin1String("NoSymbol")) return std::nullopt;
    QString trigger;
    for (const auto& [mask, name] : names) {
        if ((modifiers & mask) != 0) trigger += QLatin1String(name);
    }
    return trigger + symbol;
}

bool isAccelerator(const QString& accelerator, KeyCode key, HotKeyModifiers modifiers) {
    QString name = accelerator;
    const auto taken = takeModifiers(name);
    const auto position = positionOf(key);
    return taken && position && *taken == modifiers && isKeyAt(name, *position);
}

}  // namespace parlivo::gnome
