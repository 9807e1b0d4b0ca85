// SPDX-License-Identifier: MIT
#include "input/HotKeyChoice.h"

#include "input/KeyNames.h"
#include "platform/Platform.h"
#include "settings/Config.h"

#include <QCoreApplication>
#include <QStringList>

#include <array>

namespace parlivo::HotKeyChoice {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::HotKeyChoice)
};

constexpr HotKeyModifiers all =
    HotKeyModifier::command | HotKeyModifier::shift | HotKeyModifier::option | HotKeyModifier::control;

struct Stored {
    qint64 key = Config::get(Settings::hotkeyCode);
    qint64 modifiers = Config::get(Settings::hotkeyModifiers);

    /// Whether it can be one that this program has stored.
    bool isSound() const {
        return key >= 0 && key <= VirtualKey::lastCode && modifiers >= 0 && modifiers <= all &&
               (modifiers & ~static_cast<qint64>(all)) == 0 &&
               isAllowed(static_cast<KeyCode>(key), static_cast<HotKeyModifiers>(modifiers));
    }
};

}  // namespace

QString ownId() {
    return QStringLiteral("own");
}

Preset current() {
    const QString id = Config::get(Settings::hotkeyPreset);
    const bool anyCombination =
        Platform::current().hotKeys().contention() == HotKeyService::Contention::Common;
    if (id != ownId() || !anyCombination) return hotKeyPreset(id);
    const Stored stored;
    if (!stored.isSound()) return hotKeyPresets().front();
    const auto key = static_cast<KeyCode>(stored.key);
    const auto modifiers = static_cast<HotKeyModifiers>(stored.modifiers);
    return {id, titleOf(key, modifiers), key, modifiers};
}

bool hasOwn() {
    return Stored().isSound();
}

/// With Shift alone a key still types.
bool isAllowed(KeyCode key, HotKeyModifiers modifiers) {
    return (modifiers & ~HotKeyModifier::shift) != 0 || KeyNames::isUsableAlone(key);
}

void store(KeyCode key, HotKeyModifiers modifiers) {
    Config::set(Settings::hotkeyCode, key);
    Config::set(Settings::hotkeyModifiers, modifiers);
    Config::set(Settings::hotkeyPreset, ownId());
}

DictationMode modeInForce() {
    const bool toldOfReleases = Platform::current().hotKeys().edges() == HotKeyService::Edges::Both;
    return toldOfReleases ? Config::get(Settings::dictationMode) : DictationMode::Toggle;
}

QString titleOf(KeyCode key, HotKeyModifiers modifiers) {
    struct Name {
        HotKeyModifiers modifier;
        QString text;
    };
    const std::array names{
        Name{HotKeyModifier::control, Texts::tr("Ctrl")}, Name{HotKeyModifier::option, Texts::tr("Alt")},
        Name{HotKeyModifier::command, Texts::tr("Super")}, Name{HotKeyModifier::shift, Texts::tr("Maiusc")}};
    QStringList parts;
    for (const Name& name : names) {
        if ((modifiers & name.modifier) != 0) parts.append(name.text);
    }
    parts.append(KeyNames::nameOf(key));
    return parts.join(QLatin1Char('+'));
}

}  // namespace parlivo::HotKeyChoice
