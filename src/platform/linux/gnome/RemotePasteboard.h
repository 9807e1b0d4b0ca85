// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/gnome/RemoteDesktop.h"
#include "platform/linux/x11/QtPasteboard.h"

#include <memory>

namespace parlivo::gnome {

/// The clipboard of a GNOME session through the compositor, and the primary selection, from which terminals
/// paste, through its X server if the toolkit is there.
class RemotePasteboard : public Pasteboard {
  public:
    explicit RemotePasteboard(std::shared_ptr<RemoteDesktop> desktop);

    PasteboardTexts texts() override;
    bool setText(const QString& text, History history) override;
    void restore(const PasteboardTexts& texts) override;
    std::optional<int> timesRead() override;

  private:
    const std::shared_ptr<RemoteDesktop> desktop_;
    QtPasteboard primary_;
    QtPasteboard clipboard_;  // where the compositor refuses
};

}  // namespace parlivo::gnome
