// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "support/Lifetime.h"
#include "support/Worker.h"
#include "ui/views/Form.h"

#include <QObject>

#include <memory>
#include <vector>

namespace parlivo {

/// The line of a form that chooses the microphone: the system's choice or one named. Only for systems that
/// offer the choice (AudioInput::offersChoice). Main thread.
class MicrophonePicker : public QObject {
    Q_OBJECT

  public:
    MicrophonePicker(Form& form, QObject* parent);

    /// Asks the system for its microphones, whose names come a moment later.
    void refresh();

  private:
    void showMicrophones(const std::vector<Microphone>& microphones);

    Picker* picker_;
    std::unique_ptr<Worker> request_;
    Lifetime lifetime_;
};

}  // namespace parlivo
