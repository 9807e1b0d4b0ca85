// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"

#include <QClipboard>
#include <QMimeData>
#include <QPointer>

#include <map>

namespace parlivo {

/// The X11 clipboard and primary selection. Owned through Qt on the main thread; read from other programs in
/// the caller's thread, so that an owner which does not answer freezes no window: after a second it counts
/// as having no text.
class QtPasteboard : public Pasteboard {
  public:
    PasteboardTexts texts() override;
    void setText(const QString& text, History history) override;
    void restore(const PasteboardTexts& texts) override;

  private:
    /// Main thread.
    void put(PasteboardPlace place, const QString& text, History history);
    bool isOurs(PasteboardPlace place) const;

    /// What was put there last; Qt deletes it when something else comes. Main thread.
    std::map<PasteboardPlace, QPointer<QMimeData>> put_;
};

}  // namespace parlivo
