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
    explicit ShortcutSource(ChordKeys& keys) : keys_(keys) {
        // A window that meets this keyboard for the first time may lose its first key; this one does nothing.
        constexpr std::array harmless{EvdevKey::leftShift};
        ready_ = keys_.press(harmless);
    }

    Posted postKey(KeyCode key, KeyFlags flags) override {
        if (!ready_ || key != VirtualKey::v || flags != KeyFlag::command) return Posted::Failed;
        constexpr std::array chord{EvdevKey::leftShift, EvdevKey::insert};
        return keys_.press(chord) ? Posted::Yes : Posted::Failed;
    }
    Posted postCharacter(QStringView) override { return Posted::Failed; }

  private:
    ChordKeys& keys_;
    bool ready_ = false;
};

}  // namespace

WaylandKeyboard::WaylandKeyboard(std::unique_ptr<InputMethod> inputMethod, std::unique_ptr<ChordKeys> keys)
    : inputMethod_(std::move(inputMethod)), keys_(std::move(keys)) {}

void WaylandKeyboard::prepare() {
    if (keys_) keys_->prepare();
}

bool WaylandKeyboard::canCommitText() const {
    return inputMethod_ && inputMethod_->presence() != InputMethod::Presence::Refused;
}

std::unique_ptr<KeyEventSource> WaylandKeyboard::makeSource(QStringView) {
    if (!inputMethod_ || inputMethod_->presence() != InputMethod::Presence::Active) return nullptr;
    return std::make_unique<InputMethodSource>(*inputMethod_);
}

std::unique_ptr<KeyEventSource> WaylandKeyboard::makeShortcutSource() {
    if (!keys_) return nullptr;
    return std::make_unique<ShortcutSource>(*keys_);
}

}  // namespace parlivo::wayland
