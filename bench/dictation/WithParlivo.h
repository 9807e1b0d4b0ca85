// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/dictation/Program.h"
#include "dictation/Testbed.h"
#include "support/Keyboard.h"

#include <QString>

namespace parlivo::bench {

/// The user of Parlivo.
class WithParlivo : public DictationMethod {
  public:
    explicit WithParlivo(desktop::Program& program) : program_(program) {}
    void press() override {
        program_.forgetStates();
        keyboard_.press(desktop::Key::leftAlt);
        keyboard_.press(desktop::Key::space);
    }
    void release() override {
        keyboard_.release(desktop::Key::space);
        keyboard_.release(desktop::Key::leftAlt);
    }
    bool isOver() override { return program_.states().endsWith(QStringLiteral("idle")); }

  private:
    desktop::Program& program_;
    desktop::Keyboard keyboard_;
};

}  // namespace parlivo::bench
