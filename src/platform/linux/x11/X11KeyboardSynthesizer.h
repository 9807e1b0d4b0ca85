// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardSynthesizer.h"

#include <memory>

namespace parlivo {

/// Whether this X server lets programs press keys (XTEST). Any thread; a few milliseconds.
bool x11TypingAllowed();

/// Key strokes through XTEST, over an X connection of its own that is made on first use. The
/// destructor restores every spare key that was assigned.
class X11KeyboardSynthesizer : public KeyboardSynthesizer {
  public:
    X11KeyboardSynthesizer();
    ~X11KeyboardSynthesizer() override;
    X11KeyboardSynthesizer(const X11KeyboardSynthesizer&) = delete;
    X11KeyboardSynthesizer& operator=(const X11KeyboardSynthesizer&) = delete;

    void prepare() override;
    std::unique_ptr<KeyEventSource> makeSource(QStringView text) override;
    std::unique_ptr<KeyEventSource> makeShortcutSource() override;

  private:
    struct Session;
    /// Null if there is no way to type; tried anew each time, because a server may come back.
    Session* session();

    std::unique_ptr<Session> session_;
};

}  // namespace parlivo
