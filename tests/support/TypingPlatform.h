// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/QtPasteboard.h"
#include "platform/linux/x11/X11KeyboardSynthesizer.h"
#include "settings/Log.h"
#include "support/FakePlatform.h"

#include <memory>

namespace parlivo::desktop {

/// The real keyboard and clipboard of the display, and fakes for all else.
class TypingPlatform : public FakePlatform {
  public:
    TypingPlatform() {
        FakePlatform::keyboard().real = &realKeyboard_;
        FakePlatform::pasteboard().real = &realPasteboard_;
    }

  private:
    X11KeyboardSynthesizer realKeyboard_;
    QtPasteboard realPasteboard_;
};

/// Installs a TypingPlatform as long as this object exists, like a program that types.
class TypingProgram {
  public:
    TypingProgram() { Platform::install(std::make_unique<TypingPlatform>()); }
    ~TypingProgram() {
        // The log's thread asks the platform where the file is.
        Log::flush();
        Platform::install(nullptr);
    }
    TypingProgram(const TypingProgram&) = delete;
    TypingProgram& operator=(const TypingProgram&) = delete;
};

}  // namespace parlivo::desktop
