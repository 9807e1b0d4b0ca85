// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/ChordKeys.h"
#include "platform/linux/wayland/WaylandConnection.h"

struct org_kde_kwin_fake_input;

namespace parlivo::wayland {

/// Keys of KWin's that look like the user's (org_kde_kwin_fake_input). KWin shows this to programs only whose
/// desktop file asks for it (X-KDE-Wayland-Interfaces).
class FakeInput : public ChordKeys {
  public:
    /// The connection must outlive this.
    explicit FakeInput(WaylandConnection& connection) : connection_(connection) {}
    ~FakeInput() override;
    FakeInput(const FakeInput&) = delete;
    FakeInput& operator=(const FakeInput&) = delete;

    static bool isOffered(WaylandConnection& connection);

    bool press(std::span<const std::uint32_t> keys) override;
    bool move(std::uint32_t key, Edge edge) override;

  private:
    // On the connection's thread.
    bool ensureStarted();
    void send(std::uint32_t key, Edge edge);

    WaylandConnection& connection_;
    org_kde_kwin_fake_input* handle_ = nullptr;  // connection thread
};

}  // namespace parlivo::wayland
