// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardSynthesizer.h"
#include "platform/linux/wayland/InputMethod.h"

#include <memory>
#include <utility>

namespace parlivo::wayland {

/// Enters one text through the input method, piece by piece: a piece goes out when the field has reacted to
/// the last one. A compositor ends the connection of a program that reads nothing while many messages come
/// for it; so one that stands still is sent a piece a second, ten in all. (Some fields do not react to every
/// text: a terminal only when its cursor moves.)
class InputMethodSource : public KeyEventSource {
  public:
    explicit InputMethodSource(std::shared_ptr<InputMethod> method) : method_(std::move(method)) {}

    TextIntake intake() const override { return TextIntake::Pieces; }
    /// It has no keys.
    Posted postKey(KeyCode, KeyFlags) override { return Posted::Failed; }
    Posted postCharacter(QStringView) override { return Posted::Failed; }
    /// Control characters, but line ends and tabs, are left out.
    Posted postPiece(QStringView piece) override;

  private:
    bool mayGoOn();

    const std::shared_ptr<InputMethod> method_;
    Clock::Duration waited_{};  // in vain, since the last answer
};

}  // namespace parlivo::wayland
