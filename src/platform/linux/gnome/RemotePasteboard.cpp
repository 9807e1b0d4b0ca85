// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/RemotePasteboard.h"

#include "platform/linux/wayland/ClipboardText.h"

#include <chrono>
#include <utility>

namespace parlivo::gnome {

namespace {

using namespace std::chrono_literals;

/// How long the owner of the clipboard may take to give its text.
constexpr auto ownerTimeout = 1000ms;

}  // namespace

RemotePasteboard::RemotePasteboard(std::shared_ptr<RemoteDesktop> desktop)
    : desktop_(std::move(desktop)),
      primary_({PasteboardPlace::PrimarySelection}),
      clipboard_({PasteboardPlace::Clipboard}) {}

PasteboardTexts RemotePasteboard::texts() {
    PasteboardTexts texts = primary_.texts();
    const auto clipboard = desktop_->clipboard();
    auto text = clipboard.own;
    if (clipboard.pipe) text = wayland::readText(clipboard.pipe, Clock::Deadline(ownerTimeout));
    if (text) texts.insert(PasteboardPlace::Clipboard, *text);
    return texts;
}

/// The primary selection is a bonus: what users are told of is the clipboard.
bool RemotePasteboard::setText(const QString& text, History history) {
    static_cast<void>(primary_.setText(text, history));
    return desktop_->setClipboard(text, history) || clipboard_.setText(text, history);
}

void RemotePasteboard::restore(const PasteboardTexts& texts) {
    primary_.restore(texts);
    const auto text = texts.find(PasteboardPlace::Clipboard);
    desktop_->leave(text == texts.end() ? std::nullopt : std::optional(*text));
}

std::optional<int> RemotePasteboard::timesRead() {
    return desktop_->timesRead() + primary_.givenCount();
}

}  // namespace parlivo::gnome
