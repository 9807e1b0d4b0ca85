// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/LinuxStatusItemHost.h"

#include <chrono>
#include <utility>

namespace parlivo {

namespace {

constexpr std::chrono::milliseconds trayTimeout{2000};

}  // namespace

LinuxStatusItemHost::Watches::Watches(LinuxStatusItemHost& host)
    : bus([&host] { host.placesChanged(); }),
      tray(host.desktop_.watchTray([&host] { host.placesChanged(); })),
      panel([&host] { host.placesChanged(); }) {
    trayTimer.setSingleShot(true);
    trayTimer.callOnTimeout([&host] {
        host.settled_ = Kind::XTray;
        host.placesChanged();
    });
}

void LinuxStatusItemHost::watch(Observer observer) {
    observer_ = std::move(observer);
    reported_.reset();
    if (!observer_) {
        watches_.reset();
        return;
    }
    if (!watches_) watches_ = std::make_unique<Watches>(*this);
    placesChanged();
}

void LinuxStatusItemHost::placesChanged() {
    if (!watches_) return;  // a watch speaks up while it is being made
    const auto kind = presentKind();
    if (kind) settled_ = kind;
    report(kind ? std::optional(placeOf(*kind)) : std::nullopt);
}

std::optional<LinuxStatusItemHost::Kind> LinuxStatusItemHost::presentKind() {
    const bool trayAlone = trayPresent() && !watches_->bus.hostPresent();
    if (settled_ == Kind::XTray) return trayPresent() ? settled_ : std::nullopt;
    if (watches_->bus.hostPresent()) return Kind::Bus;
    if (settled_ == Kind::Bus || !trayAlone)
        watches_->trayTimer.stop();
    else if (!watches_->trayTimer.isActive())
        watches_->trayTimer.start(trayTimeout);
    return std::nullopt;
}

StatusItemPlace LinuxStatusItemHost::placeOf(Kind kind) const {
    if (kind == Kind::Bus)
        return {.foreground = watches_->panel.value(), .menus = StatusItemPlace::Menus::DrawnByPanel};
    return {.foreground = watches_->tray->foreground(), .menus = StatusItemPlace::Menus::DrawnByUs};
}

void LinuxStatusItemHost::report(const std::optional<StatusItemPlace>& place) {
    if (place == reported_) return;
    reported_ = place;
    observer_(place);
}

}  // namespace parlivo
