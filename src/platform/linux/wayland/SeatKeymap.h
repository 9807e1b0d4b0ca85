// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/KeyLayout.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <QByteArray>

#include <xkbcommon/xkbcommon.h>

#include <memory>

namespace parlivo::wayland {

/// The keymap of the keyboard that was used last, followed on a connection of its own. The compositor tells
/// of our own virtual keyboards', too; those are passed over.
class SeatKeymap : public KeyLayout {
  public:
    /// Null if no compositor answers.
    static std::unique_ptr<SeatKeymap> open();
    ~SeatKeymap() override;
    SeatKeymap(const SeatKeymap&) = delete;
    SeatKeymap& operator=(const SeatKeymap&) = delete;

    QString symbolName(std::uint32_t kernelCode) override;
    char32_t character(std::uint32_t kernelCode) override;
    QString label(std::uint32_t kernelCode) override;

  private:
    struct Unref {
        void operator()(xkb_context* context) const { xkb_context_unref(context); }
        void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
    };

    explicit SeatKeymap(std::unique_ptr<WaylandConnection> connection);

    // On the connection's thread.
    void start();
    void takeCapabilities(std::uint32_t capabilities);
    std::unique_ptr<xkb_keymap, Unref> compile(const QByteArray& text) const;
    static QByteArray textOf(xkb_keymap* keymap);
    void takeKeymap(std::uint32_t format, UniqueFd memory, std::uint32_t size);

    xkb_keysym_t symbol(std::uint32_t kernelCode);

    std::unique_ptr<WaylandConnection> connection_;
    const std::unique_ptr<xkb_context, Unref> context_;
    const QByteArray own_;             ///< the keymap of our virtual keyboards, as textOf() writes it
    wl_seat* seat_ = nullptr;          // connection thread
    wl_keyboard* keyboard_ = nullptr;  // connection thread
    std::unique_ptr<xkb_keymap, Unref> keymap_;  // connection thread
};

}  // namespace parlivo::wayland
