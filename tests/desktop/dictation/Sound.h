// SPDX-License-Identifier: MIT
#pragma once

#include "Demo.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace parlivo::desktop {

/// A synthetic voice that speaks into the virtual microphone.
class Voice {
  public:
    explicit Voice(const demo::Phrase& phrase);
    /// Speaks, and returns when it has spoken.
    void speak() const;

  private:
    QTemporaryDir folder_;
    QString wav_;
};

/// Plays the program's own sounds on a loudspeaker that the microphone does not hear.
void separateSpeakerFromMicrophone();

/// The streams that record at present.
QStringList recordingStreams();

/// Ends the desktop's PulseAudio server for good.
void endSoundServer();
/// Starts one like the desktop's, and returns when its microphone exists.
void startSoundServer();

}  // namespace parlivo::desktop
