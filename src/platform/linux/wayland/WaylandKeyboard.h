// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardSynthesizer.h"
#include "platform/linux/wayland/ChordKeys.h"
#include "platform/linux/wayland/InputMethod.h"

#include <memory>
#include <mutex>
#include <utility>

namespace parlivo::wayland {

/// Text by the input method where the focused field takes it so, the paste shortcut by keys.
///
/// Keys that the user holds change nothing here: what is committed is no key, and the keyboard that presses
/// the shortcut has modifiers of its own.
class WaylandKeyboard : public KeyboardSynthesizer {
  public:
    /// What it enters text with; each may be null. A source that has been made keeps its own.
    struct Means {
        std::shared_ptr<InputMethod> inputMethod;
        std::shared_ptr<ChordKeys> keys;
    };

    /// Each may be null. What they need must be there as long as they are.
    WaylandKeyboard(std::shared_ptr<InputMethod> inputMethod, std::shared_ptr<ChordKeys> keys)
        : means_{std::move(inputMethod), std::move(keys)} {}

    void prepare() override;
    bool typesText() const override { return canCommitText(); }
    /// Null if the text has to be pasted. Waits for nothing.
    std::unique_ptr<KeyEventSource> makeSource(QStringView text) override;
    std::unique_ptr<KeyEventSource> makeShortcutSource() override;

    Means means() const;
    /// Takes other means from now on. Any thread.
    void use(Means means);
    /// Any thread.
    bool canPressKeys() const;
    /// Any thread.
    bool canCommitText() const;

  private:
    mutable std::mutex mutex_;
    Means means_;  // under mutex_
};

}  // namespace parlivo::wayland
