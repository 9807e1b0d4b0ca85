// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"

#include <QClipboard>
#include <QList>
#include <QMimeData>
#include <QPointer>

#include <atomic>
#include <map>
#include <utility>

namespace parlivo {

/// The X11 clipboard and primary selection. Owned through Qt on the main thread; read from other programs in
/// the caller's thread, so that an owner which does not answer freezes no window: after a second it counts
/// as having no text.
class QtPasteboard : public Pasteboard {
  public:
    static QList<PasteboardPlace> everyPlace() {
        return {PasteboardPlace::Clipboard, PasteboardPlace::PrimarySelection};
    }
    /// For some of the places only; the others stay as they are.
    explicit QtPasteboard(QList<PasteboardPlace> places = everyPlace()) : places_(std::move(places)) {}

    PasteboardTexts texts() override;
    bool setText(const QString& text, History history) override;
    void restore(const PasteboardTexts& texts) override;

    /// How often a text that was put there has been given to somebody, this program included. At once.
    int givenCount() const { return givenCount_; }

  private:
    class Content;

    /// Main thread.
    void put(PasteboardPlace place, const QString& text, History history);
    bool isOurs(PasteboardPlace place) const;

    const QList<PasteboardPlace> places_;
    std::atomic<int> givenCount_ = 0;
    /// What was put there last; Qt deletes it when something else comes. Main thread.
    std::map<PasteboardPlace, QPointer<QMimeData>> put_;
};

}  // namespace parlivo
