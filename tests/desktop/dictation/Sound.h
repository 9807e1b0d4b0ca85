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

/// Lets the program's own sounds go where the microphone does not hear them.
void separateSpeakerFromMicrophone();

/// The streams that record at present.
QStringList recordingStreams();

/// Ends the desktop's PulseAudio server for good.
void endSoundServer();
/// Starts one as the desktop had it, and returns when its microphone is there.
void startSoundServer();

}  // namespace parlivo::desktop
