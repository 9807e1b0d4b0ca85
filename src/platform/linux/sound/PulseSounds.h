// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Bundle.h"
#include "platform/Sounds.h"
#include "support/SerialQueue.h"

namespace parlivo {

/// The sounds in the bundle's folder "sounds", played on the user's sound server. Connected only while one
/// sounds.
class PulseSounds : public Sounds {
  public:
    /// The bundle must outlive this.
    explicit PulseSounds(const Bundle& bundle);

    void play(const QString& name) override;

  private:
    const Bundle& bundle_;
    // Last: its end waits for the sound that is playing, which uses what stands above.
    SerialQueue queue_;
};

}  // namespace parlivo
