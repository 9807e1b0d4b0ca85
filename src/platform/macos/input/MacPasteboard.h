// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"

#include <mutex>

namespace parlivo {

/// The general pasteboard. Its change count tells whether what lies there is still ours.
class MacPasteboard : public Pasteboard {
  public:
    PasteboardTexts texts() override;
    void setText(const QString& text, History history) override;
    void restore(const PasteboardTexts& texts) override;

  private:
    void put(const QString& text, History history);

    std::mutex mutex_;       // the pasteboard takes several calls for one change
    long changeCount_ = -1;  // after our last change; under mutex_
};

}  // namespace parlivo
