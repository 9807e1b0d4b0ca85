// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

class QObject;

namespace parlivo {

enum class MicrophoneStatus { Authorised, NotAsked, Denied };

/// How far a request for the microphone goes on a system that keeps no record of what it granted.
enum class MicrophoneCheck {
    WithoutRecording,  ///< what can be known without opening the microphone
    ByRecording,       ///< opens it for a moment
};

/// The permissions that the program needs: to hear and to type.
class Permissions {
  public:
    enum class Prompt { No, Yes };
    /// Whether access was granted. May be called on any thread.
    using Answer = std::function<void(bool granted)>;

    virtual ~Permissions() = default;

    /// The last known status, at once; the system is asked anew in the background. Main thread.
    virtual MicrophoneStatus microphone() = 0;
    /// `changed` is called on the main thread when the status becomes another one, until `owner` is gone. The
    /// default is for a system whose answer to microphone() is always the present one. Main thread.
    virtual void observeMicrophone(
        const QObject* /*owner*/,
        // NOLINTNEXTLINE(performance-unnecessary-value-param): those who observe keep it
        std::function<void(MicrophoneStatus)> /*changed*/) {}
    /// Asks the system, and the user if it does so. Returns at once. Main thread.
    virtual void requestMicrophone(MicrophoneCheck check, Answer answer) = 0;
    /// Whether the program may send keys to other applications; with a prompt the system may ask the user.
    /// Any thread.
    virtual bool accessibilityTrusted(Prompt prompt) = 0;
};

}  // namespace parlivo
