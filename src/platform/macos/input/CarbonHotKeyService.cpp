// SPDX-License-Identifier: MIT
#include "platform/macos/input/CarbonHotKeyService.h"

#include <Carbon/Carbon.h>

#include <array>
#include <optional>
#include <utility>

namespace parlivo {

namespace {

constexpr std::array<EventTypeSpec, 2> keyEvents{
    {{kEventClassKeyboard, kEventHotKeyPressed}, {kEventClassKeyboard, kEventHotKeyReleased}}};

std::optional<HotKeyIdentity> identityOf(EventRef event) {
    EventHotKeyID id{};
    const OSStatus status = GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID, nullptr,
                                              sizeof id, nullptr, &id);
    if (status != noErr) return std::nullopt;
    return HotKeyIdentity{id.signature, id.id};
}

}  // namespace

/// The application's event handler, and which key is down as far as its events tell.
class CarbonHotKeyService::Handler : public HotKeyHandler {
  public:
    Handler(CarbonHotKeyService& service, Edge pressed, Edge released)
        : service_(service), pressed_(std::move(pressed)), released_(std::move(released)) {
        InstallEventHandler(GetApplicationEventTarget(), &Handler::handle, keyEvents.size(), keyEvents.data(),
                            this, &reference_);
        service_.handler_ = this;
    }
    ~Handler() override {
        if (service_.handler_ == this) service_.handler_ = nullptr;
        if (reference_ != nullptr) RemoveEventHandler(reference_);
    }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;

    void release() {
        if (!std::exchange(down_, false) || !released_) return;
        released_();
    }

  private:
    static OSStatus handle(EventHandlerCallRef, EventRef event, void* self) {
        return static_cast<Handler*>(self)->take(event) ? noErr : eventNotHandledErr;
    }

    bool take(EventRef event) {
        const auto identity = identityOf(event);
        if (!identity || identity != service_.registered_) return false;
        if (GetEventKind(event) == kEventHotKeyPressed) {
            press();
        } else {
            release();
        }
        return true;
    }

    void press() {
        if (std::exchange(down_, true) || !pressed_) return;
        pressed_();
    }

    CarbonHotKeyService& service_;
    const Edge pressed_;
    const Edge released_;
    EventHandlerRef reference_ = nullptr;
    bool down_ = false;
};

class CarbonHotKeyService::Registration : public HotKeyRegistration {
  public:
    Registration(CarbonHotKeyService& service, EventHotKeyRef reference)
        : service_(service), reference_(reference) {}
    ~Registration() override {
        UnregisterEventHotKey(reference_);
        service_.registered_.reset();
        // Of a hold that is under way the system will not tell the end any more.
        if (service_.handler_ != nullptr) service_.handler_->release();
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    CarbonHotKeyService& service_;
    EventHotKeyRef reference_;
};

std::unique_ptr<HotKeyHandler> CarbonHotKeyService::installHandler(Edge pressed, Edge released,
                                                                   Change /*changed*/) {
    // Positions do not depend on the keyboard layout here, so a registered hot key stays registered.
    return std::make_unique<Handler>(*this, std::move(pressed), std::move(released));
}

HotKeyService::Result CarbonHotKeyService::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                          HotKeyIdentity identity) {
    EventHotKeyRef reference = nullptr;
    constexpr OptionBits noOptions = 0;
    const OSStatus status = RegisterEventHotKey(key, modifiers, {identity.signature, identity.id},
                                                GetApplicationEventTarget(), noOptions, &reference);
    if (status != noErr) return HotKeyRefusal{status};
    registered_ = identity;
    return std::make_unique<Registration>(*this, reference);
}

}  // namespace parlivo
