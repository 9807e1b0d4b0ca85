// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

namespace parlivo {

/// What recordings tell about the sound server, and ask before they wait for it. Any thread.
class MicrophoneReports {
  public:
    /// A server that does not answer within this is taken for missing.
    static constexpr std::chrono::milliseconds answerLimit{1000};

    virtual ~MicrophoneReports() = default;

    /// Whether the server was silent when it was last asked.
    virtual bool serverHangs() const = 0;
    /// The server did not answer in time.
    virtual void reportSilence() = 0;
    /// Whether the server granted a recording.
    virtual void reportRecording(bool granted) = 0;

    /// The source that the user chose in the program; empty: the server's choice.
    virtual std::string chosenSource() const = 0;
    virtual void chooseSource(std::string name) = 0;

  protected:
    MicrophoneReports() = default;
    MicrophoneReports(const MicrophoneReports&) = default;
    MicrophoneReports& operator=(const MicrophoneReports&) = default;
};

}  // namespace parlivo
