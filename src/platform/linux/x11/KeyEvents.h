#pragma once

#include "platform/KeyboardSynthesizer.h"
#include "platform/linux/x11/KeyTruce.h"
#include "platform/linux/x11/SymbolKeys.h"
#include "platform/linux/x11/X11Keyboard.h"

#include <memory>
#include <optional>
#include <vector>

namespace parlivo::x11 {

/// The keys of one text or one shortcut.
class KeyEvents : public KeyEventSource {
  public:
    /// Null when the keyboard cannot be given all of `symbols` at once.
    static std::unique_ptr<KeyEventSource> make(X11Keyboard& keyboard, SymbolKeys& keys,
                                                std::vector<KeySymbol> symbols);

    ~KeyEvents() override;
    KeyEvents(const KeyEvents&) = delete;
    KeyEvents& operator=(const KeyEvents&) = delete;

    void postKey(KeyCode key, KeyFlags flags) override;
    void postCharacter(QStringView character) override;

  private:
    KeyEvents(X11Keyboard& keyboard, SymbolKeys& keys, std::vector<KeySymbol> symbols);
    void letGoOfShift();
    /// Another program may give the keyboard a new map in the middle of a text.
    void followMapChanges();
    void post(KeySymbol symbol);
    void tap(xcb_keycode_t key);
    void tapShifted(xcb_keycode_t key);

    X11Keyboard& keyboard_;
    SymbolKeys& keys_;
    std::vector<KeySymbol> symbols_;
    KeyTruce truce_;
};

}  // namespace parlivo::x11
