// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/GnomePortal.h"

#include "platform/linux/gnome/Accelerator.h"
#include "platform/linux/gnome/CustomBinding.h"
#include "platform/linux/gnome/DesktopSettings.h"

#include <memory>

namespace parlivo::gnome {

namespace {

/// Where GNOME notes which programs the user has allowed hot keys.
const QString allowed = QStringLiteral("org.gnome.settings-daemon.global-shortcuts");
const QString allowedPrograms = QStringLiteral("applications");
const QString keyboard = QStringLiteral("org.gnome.desktop.peripherals.keyboard");

/// A number is printed with its type before it: "uint32 500".
std::chrono::milliseconds duration(const QString& key, std::chrono::milliseconds otherwise) {
    bool isNumber = false;
    const int number = DesktopSettings::value(keyboard, key)
                           .value_or(QString())
                           .section(QLatin1Char(' '), -1)
                           .toInt(&isNumber);
    return isNumber && number > 0 ? std::chrono::milliseconds(number) : otherwise;
}

portal::ReleaseRule::Repeat repeat() {
    const portal::ReleaseRule::Repeat usual;
    return {.isOn = DesktopSettings::value(keyboard, QStringLiteral("repeat")) != QLatin1String("false"),
            .delay = duration(QStringLiteral("delay"), usual.delay),
            .interval = duration(QStringLiteral("repeat-interval"), usual.interval)};
}

/// The desktop's own combinations. A refused one is asked for every few seconds.
class HeldKeys {
  public:
    bool contain(KeyCode key, HotKeyModifiers modifiers) {
        if (age_.passed()) {
            settings_.forget();
            age_ = Clock::Deadline(longestAge);
        }
        return settings_.isHeld(key, modifiers);
    }

  private:
    static constexpr std::chrono::seconds longestAge{30};

    CustomBinding settings_{QString()};
    Clock::Deadline age_{longestAge};
};

bool isAllowed() {
    const auto programs = DesktopSettings::value(allowed, allowedPrograms);
    return DesktopSettings::stringsIn(programs.value_or(QString()))
        .contains(QStringLiteral("it.parlivo.Parlivo"));
}

}  // namespace

bool hasPortalKeys() {
    return DesktopSettings::isAvailable() && DesktopSettings::value(allowed, allowedPrograms).has_value();
}

portal::PortalDesktop portalDesktop() {
    return {.trigger = triggerOf,
            .isHeld = [held = std::make_shared<HeldKeys>()](
                          KeyCode key, HotKeyModifiers modifiers) { return held->contain(key, modifiers); },
            .isAllowed = isAllowed,
            .repeat = repeat()};
}

}  // namespace parlivo::gnome
