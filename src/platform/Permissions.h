#pragma once

#include <functional>

namespace parlivo {

enum class MicrophoneStatus { Authorised, NotAsked, Denied };

/// The permissions that the program needs: to hear and to type.
class Permissions {
  public:
    enum class Prompt { No, Yes };
    /// Whether access was granted. May be called on any thread.
    using Answer = std::function<void(bool granted)>;

    virtual ~Permissions() = default;

    /// Main thread; returns within about a second.
    virtual MicrophoneStatus microphone() = 0;
    virtual void requestMicrophone(Answer answer) = 0;
    /// Whether the program may send keys to other applications; with a prompt the system may ask the user.
    /// Any thread.
    virtual bool accessibilityTrusted(Prompt prompt) = 0;
};

}  // namespace parlivo
