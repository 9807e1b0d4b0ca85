// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11HotKeyService.h"

#include "platform/linux/desktop/KeyPositions.h"
#include "platform/linux/x11/KeyLabel.h"
#include "platform/linux/x11/XcbQueries.h"
#include "platform/linux/x11/XcbXkb.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <span>
#include <utility>

namespace parlivo {

namespace {

using namespace std::chrono_literals;
using x11::owned;

/// While a key is held, and only then, the server is asked this often whether it still is.
constexpr auto holdCheckInterval = 150ms;
/// Changes of the keyboard map come in bursts: setxkbmap makes several.
constexpr auto mapSettling = 20ms;

struct ModifierPair {
    HotKeyModifiers modifier;
    std::uint16_t mask;
};
constexpr std::array modifierPairs{
    ModifierPair{HotKeyModifier::command, XCB_MOD_MASK_4},
    ModifierPair{HotKeyModifier::shift, XCB_MOD_MASK_SHIFT},
    ModifierPair{HotKeyModifier::option, XCB_MOD_MASK_1},
    ModifierPair{HotKeyModifier::control, XCB_MOD_MASK_CONTROL},
};

std::optional<x11::KeyCombination> combinationOf(KeyCode code, HotKeyModifiers modifiers) {
    const auto position = KeyPositions::kernelCodeOf(code);
    if (!position) return std::nullopt;
    x11::KeyCombination combination{.key =
                                        static_cast<xcb_keycode_t>(*position + KeyPositions::displayOffset)};
    for (const auto& [modifier, mask] : modifierPairs) {
        if ((modifiers & modifier) != 0) combination.modifiers |= mask;
    }
    return combination;
}

HotKeyRefusal refusal(int status) {
    using Reason = HotKeyRefusal::Reason;
    return {.status = status, .reason = status == XCB_ACCESS ? Reason::Taken : Reason::Unusable};
}

bool isDownOnMaster(xcb_connection_t* connection, xcb_keycode_t key) {
    const auto map = owned(xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr));
    return map && (std::span(map->keys)[key / 8U] >> (key % 8U) & 1U) != 0;
}

}  // namespace

class X11HotKeyService::Registration : public HotKeyRegistration {
  public:
    Registration(X11HotKeyService& service, x11::KeyCombination combination, x11::KeyGrab grab)
        : service_(service), combination_(combination), grab_(std::move(grab)) {
        service_.registrations_.push_back(this);
    }
    ~Registration() override {
        grab_.reset();
        service_.remove(this);
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    const x11::KeyCombination& combination() const { return combination_; }

    /// Takes the combination with other locks. Where another client has some of them, the present ones stay.
    void regrab(const x11::LockModifiers& locks) {
        const auto previous = grab_ ? grab_->locks() : locks;
        grab_.reset();
        error_ = grab(locks);
        if (error_ != 0 && previous != locks) grab(previous);
    }
    bool isOnKeyboards() const { return grab_ && grab_->isOnKeyboards(); }
    /// The X error code of the last regrab, or 0.
    int error() const { return error_; }

  private:
    int grab(const x11::LockModifiers& locks) {
        auto result = x11::KeyGrab::take(service_.connection_.get(), service_.root_, combination_, locks);
        if (const int* const error = std::get_if<int>(&result)) return *error;
        grab_ = std::move(std::get<x11::KeyGrab>(result));
        return 0;
    }

    X11HotKeyService& service_;
    x11::KeyCombination combination_;
    std::optional<x11::KeyGrab> grab_;
    int error_ = 0;
};

X11HotKeyService::X11HotKeyService() {
    holdCheck_.setInterval(holdCheckInterval);
    QObject::connect(&holdCheck_, &QTimer::timeout, &holdCheck_, [this] { checkHold(); });
    mapCheck_.setInterval(mapSettling);
    mapCheck_.setSingleShot(true);
    QObject::connect(&mapCheck_, &QTimer::timeout, &mapCheck_, [this] { followKeyboardMap(); });
    keyboardCheck_.setInterval(mapSettling);
    keyboardCheck_.setSingleShot(true);
    QObject::connect(&keyboardCheck_, &QTimer::timeout, &keyboardCheck_, [this] {
        probe_.reset();
        regrabAll(true);
    });
}

X11HotKeyService::~X11HotKeyService() = default;

std::unique_ptr<HotKeyHandler> X11HotKeyService::installHandler(Edge pressed, Edge released, Change changed) {
    return edges_.install(std::move(pressed), std::move(released), std::move(changed));
}

HotKeyService::Result X11HotKeyService::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                       HotKeyIdentity) {
    const auto combination = combinationOf(key, modifiers);
    if (!combination) return refusal(XCB_VALUE);
    if (const int status = ensureConnection(); status != 0) return refusal(status);
    auto result = x11::KeyGrab::take(connection_.get(), root_, *combination, locks_);
    if (const int status = xcb_connection_has_error(connection_.get()); status != 0) {
        return refusal(status);
    }
    if (const int* const error = std::get_if<int>(&result)) return refusal(*error);
    return std::make_unique<Registration>(*this, *combination, std::get<x11::KeyGrab>(std::move(result)));
}

std::optional<KeyCode> X11HotKeyService::keyCodeOf(std::uint32_t nativeScanCode) const {
    return KeyPositions::keyCodeOfDisplays(nativeScanCode);
}

void X11HotKeyService::watchRefused(std::function<void()> mayBeFree) {
    mayBeFree_ = std::move(mayBeFree);
    probe_.reset();
    if (connection_) selectRootEvents();
}

void X11HotKeyService::selectRootEvents() const {
    const std::uint32_t events = mayBeFree_ ? XCB_EVENT_MASK_PROPERTY_CHANGE : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &events);
    xcb_flush(connection_.get());
}

bool X11HotKeyService::anyMayBeFree(const std::vector<HotKeyCombination>& refused) {
    std::vector<x11::KeyCombination> combinations;
    for (const auto& [key, modifiers] : refused)
        if (const auto combination = combinationOf(key, modifiers)) combinations.push_back(*combination);
    if (!probe_) probe_.emplace();
    return probe_->anyMayBeGrabbed(combinations);
}

QString X11HotKeyService::keyLabel(KeyCode key) {
    const auto combination = combinationOf(key, 0);
    if (!combination || ensureConnection() != 0) return {};
    return x11::keyLabel(connection_.get(), combination->key);
}

int X11HotKeyService::ensureConnection() {
    // A broken connection is kept while grabs refer to it; what is sent to it is lost.
    const bool broken = connection_ && xcb_connection_has_error(connection_.get()) != 0;
    if (broken && registrations_.empty()) {
        events_.reset();
        connection_.reset();
    }
    if (connection_) return xcb_connection_has_error(connection_.get());

    int screenNumber = 0;
    x11::ConnectionHandle connection(xcb_connect(nullptr, &screenNumber));
    if (const int error = xcb_connection_has_error(connection.get()); error != 0) return error;
    connection_ = std::move(connection);
    if (!startKeyboard()) {
        connection_.reset();
        return XCB_CONN_CLOSED_EXT_NOTSUPPORTED;
    }
    root_ = x11::screenOf(connection_.get(), screenNumber)->root;
    watchKeyboardMap();
    locks_ = x11::LockModifiers(connection_.get());
    windowManagerCheck_ = x11::internAtom(connection_.get(), "_NET_SUPPORTING_WM_CHECK");
    selectRootEvents();
    events_.emplace(connection_.get(), root_,
                    x11::HotKeyEvents::Handlers{.event = [this](const auto& event) { handle(event); },
                                                .echo = [this](std::uint32_t hold) { endLostHold(hold); },
                                                .end = [this] { endHold(); }});
    return 0;
}

bool X11HotKeyService::startKeyboard() {
    const auto events = x11::startKeyboardExtension(connection_.get());
    if (!events) return false;
    keyboardEvent_ = *events;
    constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    auto* const c = connection_.get();
    const auto set = xcb_xkb_per_client_flags(c, XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0);
    const auto flags = owned(xcb_xkb_per_client_flags_reply(c, set, nullptr));
    return flags && (flags->value & flag) != 0;
}

void X11HotKeyService::watchKeyboardMap() {
    // Not the keysyms: typing changes those of spare keys all the time.
    constexpr std::uint16_t parts = XCB_XKB_MAP_PART_MODIFIER_MAP;
    constexpr std::uint16_t newKeyboard = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY;
    xcb_xkb_select_events(connection_.get(), XCB_XKB_ID_USE_CORE_KBD,
                          newKeyboard | XCB_XKB_EVENT_TYPE_MAP_NOTIFY, 0, newKeyboard, parts, parts, nullptr);
}

void X11HotKeyService::handle(const xcb_generic_event_t& event) {
    // A client of the keyboard extension hears of setxkbmap and of a plugged keyboard by its events only.
    if (event.response_type == keyboardEvent_) return mapCheck_.start();
    if (event.response_type == XCB_MAPPING_NOTIFY) return mapCheck_.start();
    if (event.response_type == XCB_PROPERTY_NOTIFY) {
        const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        // A window manager that comes or goes takes its keys at the same time.
        if (property.atom == windowManagerCheck_) mapCheck_.start();
        return;
    }
    if (x11::isKeyboardChange(connection_.get(), event)) return keyboardCheck_.start();
    const auto key = x11::grabbedKeyOf(connection_.get(), event);
    if (!key) return;
    if (key->edge == x11::GrabbedKey::Edge::Press) {
        keyPressed(*key);
    } else {
        keyReleased(*key);
    }
}

void X11HotKeyService::keyPressed(const x11::GrabbedKey& key) {
    // While a key is held, its repeats and all other keys arrive here, too.
    if (hold_ || !isHotKey(key)) return;
    // A grab of a single keyboard comes before even these.
    const bool ignored = key.keyboard != 0 && isKeyboardTaken();
    hold_ = Hold{.key = key.key, .keyboard = key.keyboard, .number = ++holds_};
    holdCheck_.start();
    if (!ignored) edges_.press();
}

void X11HotKeyService::keyReleased(const x11::GrabbedKey& key) {
    if (hold_ && hold_->key == key.key && hold_->keyboard == key.keyboard) endHold();
}

bool X11HotKeyService::isHotKey(const x11::GrabbedKey& key) const {
    const auto modifiers = static_cast<std::uint16_t>(key.state & ~locks_.mask());
    return std::ranges::any_of(registrations_, [&](const Registration* registration) {
        const auto& combination = registration->combination();
        // The grab of a keyboard was matched with the modifiers of all of them, its events tell of its own.
        return combination.key == key.key && (key.keyboard != 0 || combination.modifiers == modifiers);
    });
}

bool X11HotKeyService::isKeyboardTaken() const {
    auto* const c = connection_.get();
    constexpr std::uint8_t eventsToRoot = 0;
    const auto cookie =
        xcb_grab_keyboard(c, eventsToRoot, root_, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const auto grab = owned(xcb_grab_keyboard_reply(c, cookie, nullptr));
    if (!grab || grab->status != XCB_GRAB_STATUS_SUCCESS) return true;
    xcb_ungrab_keyboard(c, XCB_CURRENT_TIME);
    xcb_flush(c);
    return false;
}

bool X11HotKeyService::isDown(const Hold& hold) const {
    return hold.keyboard == 0 ? isDownOnMaster(connection_.get(), hold.key)
                              : x11::isDownOn(connection_.get(), hold.keyboard, hold.key);
}

void X11HotKeyService::endHold() {
    holdCheck_.stop();
    hold_.reset();
    edges_.release();
}

void X11HotKeyService::checkHold() {
    // What came in before the answer goes first: it may be the release itself, and repeats before it.
    if (hold_ && !isDown(*hold_)) events_->askForEcho(hold_->number);
}

void X11HotKeyService::endLostHold(std::uint32_t number) {
    if (hold_ && hold_->number == number) endHold();
}

void X11HotKeyService::followKeyboardMap() {
    const x11::LockModifiers locks(connection_.get());
    const bool moved = locks != locks_;
    locks_ = locks;
    regrabAll(moved);
    if (const auto mayBeFree = mayBeFree_) mayBeFree();
}

/// Those that depend on the locks or on the keyboards, and those that failed.
void X11HotKeyService::regrabAll(bool locksMoved) {
    std::optional<int> outcome;
    for (auto* const registration : registrations_) {
        const int before = registration->error();
        if (!locksMoved && before == 0) continue;
        registration->regrab(locks_);
        if (registration->error() != before) outcome = registration->error();
    }
    if (outcome) edges_.tell(*outcome == 0 ? std::nullopt : std::optional(refusal(*outcome)));
}

void X11HotKeyService::remove(const Registration* registration) {
    std::erase(registrations_, registration);
    // The key may still be down: its receiver has the release now, and its repeats start nothing new.
    if (hold_ && hold_->key == registration->combination().key) edges_.release();
}

}  // namespace parlivo
