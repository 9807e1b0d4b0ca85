// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardSynthesizer.h"

namespace parlivo {

/// Key strokes through Quartz event services. An event carries its text with it, so that any character can be
/// typed on any keyboard, and keys are named by the port's own codes.
class QuartzKeyboardSynthesizer : public KeyboardSynthesizer {
  public:
    void prepare() override {}
    std::unique_ptr<KeyEventSource> makeSource(QStringView text) override;
    std::unique_ptr<KeyEventSource> makeShortcutSource() override;
};

}  // namespace parlivo
