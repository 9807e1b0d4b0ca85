// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"

#include <mutex>

namespace parlivo {

/// The general pasteboard. Its change count tells whether what lies there is still ours.
class MacPasteboard : public Pasteboard {
  public:
    PasteboardTexts texts() override;
    bool setText(const QString& text, History history) override;
    void restore(const PasteboardTexts& texts) override;

  private:
    /// Whether the system has taken the text.
    bool put(const QString& text, History history);

    std::mutex mutex_;       // the pasteboard takes several calls for one change
    long changeCount_ = -1;  // after our last change; under mutex_
};

}  // namespace parlivo
