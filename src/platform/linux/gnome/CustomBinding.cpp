// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/CustomBinding.h"

#include "platform/linux/gnome/Accelerator.h"
#include "platform/linux/gnome/DesktopSettings.h"

#include <algorithm>

namespace parlivo::gnome {

namespace {

using namespace DesktopSettings;

const QString mediaKeys = QStringLiteral("org.gnome.settings-daemon.plugins.media-keys");
const QString listKey = QStringLiteral("custom-keybindings");
const QString ownPath =
    QStringLiteral("/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/parlivo/");
const QString bindingKey = QStringLiteral("binding");
const QString commandKey = QStringLiteral("command");

/// Where GNOME keeps its own combinations.
const QStringList schemas{QStringLiteral("org.gnome.desktop.wm.keybindings"),
                          QStringLiteral("org.gnome.mutter.keybindings"),
                          QStringLiteral("org.gnome.mutter.wayland.keybindings"),
                          QStringLiteral("org.gnome.shell.keybindings"), mediaKeys};

QString entry(const QString& path) {
    return mediaKeys + QStringLiteral(".custom-keybinding:") + path;
}

/// A value's only string; empty if there is none.
QString stringOf(const QString& path, const QString& key) {
    return stringsIn(value(entry(path), key).value_or(QString())).value(0);
}

}  // namespace

QStringList CustomBinding::list() {
    if (!list_) list_ = stringsIn(value(mediaKeys, listKey).value_or(QString()));
    return *list_;
}

bool CustomBinding::exists() {
    return list().contains(ownPath);
}

QString CustomBinding::accelerator() {
    if (!exists()) return {};
    if (!accelerator_) accelerator_ = stringOf(ownPath, bindingKey);
    return *accelerator_;
}

/// The list comes last, so that the entry is whole when it is looked at.
bool CustomBinding::assign(const QString& accelerator) {
    forgetEntry();
    if (exists() && this->accelerator() == accelerator) return true;
    QStringList all = list();
    if (!all.contains(ownPath)) all.append(ownPath);
    const bool stored = set(entry(ownPath), QStringLiteral("name"), text(QStringLiteral("Parlivo"))) &&
                        set(entry(ownPath), commandKey, text(command_)) &&
                        set(entry(ownPath), bindingKey, text(accelerator)) &&
                        set(mediaKeys, listKey, text(all));
    forgetEntry();
    return stored && exists();
}

void CustomBinding::remove() {
    forgetEntry();
    QStringList all = list();
    all.removeAll(ownPath);
    set(mediaKeys, listKey, text(all));
    reset(entry(ownPath));
    forgetEntry();
}

void CustomBinding::mendCommand() {
    if (exists() && stringOf(ownPath, commandKey) != command_)
        set(entry(ownPath), commandKey, text(command_));
}

bool CustomBinding::isHeld(KeyCode key, HotKeyModifiers modifiers) {
    if (!held_) {
        held_.emplace();
        for (const QString& schema : schemas) {
            for (const QString& line : values(schema)) held_->append(stringsIn(line));
        }
        for (const QString& path : list()) {
            if (path != ownPath) held_->append(stringOf(path, bindingKey));
        }
    }
    return std::ranges::any_of(
        *held_, [&](const QString& accelerator) { return isAccelerator(accelerator, key, modifiers); });
}

void CustomBinding::forget() {
    forgetEntry();
    held_.reset();
}

void CustomBinding::forgetEntry() {
    list_.reset();
    accelerator_.reset();
}

}  // namespace parlivo::gnome
