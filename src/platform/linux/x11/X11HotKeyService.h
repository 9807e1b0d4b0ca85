// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"
#include "platform/linux/desktop/HotKeyEdges.h"
#include "platform/linux/x11/GrabProbe.h"
#include "platform/linux/x11/HotKeyEvents.h"
#include "platform/linux/x11/KeyGrab.h"
#include "platform/linux/x11/LockModifiers.h"
#include "platform/linux/x11/XcbHandles.h"

#include <QTimer>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace parlivo {

/// Hot keys by passive grabs on the root window of the display that DISPLAY names.
///
/// The connection is its own, opened at the first registration: on the toolkit's connection, which has no
/// detectable auto-repeat, a held key gives pairs of false releases and presses.
///
/// From the press on, the server keeps the whole keyboard grabbed for us until the key comes up. The grab is
/// deliberately not given up earlier. Measured on the server: auto-repeat cannot be stopped once the key is
/// down (switching the repeat off lets a repeat that is due go on). Without the grab each repeat would
/// activate it anew and take the focus from the focused window and return it, some 25 times a second; and
/// once the user has released the modifiers, which is commonly a moment before the key, the repeats would no
/// longer match and fall into the focused window as typed spaces. The price: what XTEST sends meanwhile
/// reaches us, not the focused window. So typing starts only when the user has released all keys; and if
/// that does not happen, releasing the held keys in the user's place ends the grab, too.
///
/// The status of a refusal is the X error code (10, BadAccess, when another client has the combination), or
/// the XCB_CONN_ number when the display cannot be reached or lacks the keyboard extension.
class X11HotKeyService : public HotKeyService {
  public:
    X11HotKeyService();
    ~X11HotKeyService() override;
    X11HotKeyService(const X11HotKeyService&) = delete;
    X11HotKeyService& operator=(const X11HotKeyService&) = delete;

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    /// Window managers hold many combinations.
    Contention contention() const override { return Contention::Common; }
    std::optional<KeyCode> keyCodeOf(std::uint32_t nativeScanCode) const override;
    /// While watching, every change of a property of the root window is looked at.
    void watchRefused(std::function<void()> mayBeFree) override;
    /// One round trip, except for the first time.
    bool anyMayBeFree(const std::vector<HotKeyCombination>& refused) override;
    QString keyLabel(KeyCode key) override;

  private:
    class Registration;

    /// A hot key that went down and has not come up.
    struct Hold {
        xcb_keycode_t key = 0;
        x11::KeyboardId keyboard = 0;
        std::uint32_t number = 0;
    };

    /// The XCB_CONN_ number, or 0.
    int ensureConnection();
    /// Makes holding a key give repeated presses and one release. False if the server lacks the extension.
    bool startKeyboard();
    void watchKeyboardMap();
    void handle(const xcb_generic_event_t& event);
    void keyPressed(const x11::GrabbedKey& key);
    void keyReleased(const x11::GrabbedKey& key);
    /// Whether another client has the whole keyboard: a menu, a screen lock.
    bool isKeyboardTaken() const;
    bool isDown(const Hold& hold) const;
    void endHold();
    /// Notices a release that was not reported, as when the keyboard goes away while the key is down.
    void checkHold();
    void endLostHold(std::uint32_t number);
    void followKeyboardMap();
    bool isHotKey(const x11::GrabbedKey& key) const;
    void regrabAll(bool locksMoved);
    void selectRootEvents() const;
    void remove(const Registration* registration);

    x11::ConnectionHandle connection_;
    xcb_window_t root_ = XCB_NONE;
    std::uint8_t keyboardEvent_ = 0;  ///< the type of the keyboard extension's events
    std::optional<x11::HotKeyEvents> events_;
    x11::LockModifiers locks_;
    std::vector<Registration*> registrations_;
    HotKeyEdges edges_;
    std::optional<Hold> hold_;
    std::function<void()> mayBeFree_;
    std::optional<x11::GrabProbe> probe_;  ///< while refused combinations are watched
    xcb_atom_t windowManagerCheck_ = XCB_ATOM_NONE;
    std::uint32_t holds_ = 0;  ///< so far, and with it the number of the last
    QTimer holdCheck_;
    QTimer mapCheck_;
    QTimer keyboardCheck_;
};

}  // namespace parlivo
