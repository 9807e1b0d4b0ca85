// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardSynthesizer.h"
#include "platform/linux/wayland/ChordKeys.h"
#include "platform/linux/wayland/InputMethod.h"

#include <memory>
#include <utility>

namespace parlivo::wayland {

/// Text by the input method where the focused field takes it so, the paste shortcut by keys.
///
/// Keys that the user holds change nothing here: what is committed is no key, and the keyboard that presses
/// the shortcut has modifiers of its own.
class WaylandKeyboard : public KeyboardSynthesizer {
  public:
    /// Either may be null. The connection that they use must outlive this.
    WaylandKeyboard(std::unique_ptr<InputMethod> inputMethod, std::unique_ptr<ChordKeys> keys);

    void prepare() override;
    /// Null if the text has to be pasted. Waits for nothing.
    std::unique_ptr<KeyEventSource> makeSource(QStringView text) override;
    std::unique_ptr<KeyEventSource> makeShortcutSource() override;

    /// Takes other keys. Before the first source is made.
    void useKeys(std::unique_ptr<ChordKeys> keys) { keys_ = std::move(keys); }
    bool canPressKeys() const { return keys_ != nullptr; }
    /// Any thread.
    bool canCommitText() const;

  private:
    std::unique_ptr<InputMethod> inputMethod_;
    std::unique_ptr<ChordKeys> keys_;
};

}  // namespace parlivo::wayland
