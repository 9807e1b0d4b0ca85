// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/WaylandKeyboard.h"

#include "platform/linux/wayland/InputMethodSource.h"

#include <array>
#include <utility>

namespace parlivo::wayland {

namespace {

/// The paste shortcut: Shift+Insert pastes in terminals, too, and it means the same on every layout.
class ShortcutSource : public KeyEventSource {
  public:
    explicit ShortcutSource(std::shared_ptr<ChordKeys> keys) : keys_(std::move(keys)) {
        // A window that meets this keyboard for the first time may lose its first key; this one does nothing.
        constexpr std::array harmless{EvdevKey::leftShift};
        ready_ = keys_->press(harmless);
    }

    Posted postKey(KeyCode key, KeyFlags flags) override {
        if (!ready_ || key != VirtualKey::v || flags != KeyFlag::command) return Posted::Failed;
        constexpr std::array chord{EvdevKey::leftShift, EvdevKey::insert};
        return keys_->press(chord) ? Posted::Yes : Posted::Failed;
    }
    Posted postCharacter(QStringView) override { return Posted::Failed; }

  private:
    const std::shared_ptr<ChordKeys> keys_;
    bool ready_ = false;
};

}  // namespace

WaylandKeyboard::Means WaylandKeyboard::means() const {
    const std::lock_guard lock(mutex_);
    return means_;
}

void WaylandKeyboard::use(Means means) {
    const std::lock_guard lock(mutex_);
    std::swap(means_, means);  // the former ones end without the lock
}

void WaylandKeyboard::prepare() {
    if (const auto keys = means().keys) keys->prepare();
}

bool WaylandKeyboard::canPressKeys() const {
    return means().keys != nullptr;
}

bool WaylandKeyboard::canCommitText() const {
    const auto method = means().inputMethod;
    return method && method->presence() != InputMethod::Presence::Refused;
}

std::unique_ptr<KeyEventSource> WaylandKeyboard::makeSource(QStringView) {
    auto method = means().inputMethod;
    if (!method || method->presence() != InputMethod::Presence::Active) return nullptr;
    return std::make_unique<InputMethodSource>(std::move(method));
}

std::unique_ptr<KeyEventSource> WaylandKeyboard::makeShortcutSource() {
    auto keys = means().keys;
    return keys ? std::make_unique<ShortcutSource>(std::move(keys)) : nullptr;
}

}  // namespace parlivo::wayland
