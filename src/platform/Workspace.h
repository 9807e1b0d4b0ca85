// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

namespace parlivo {

enum class PrivacyPane { Microphone, Accessibility };

/// The desktop around the program. Main thread; every operation returns at once.
class Workspace {
  public:
    virtual ~Workspace() = default;

    /// Opens a file or an address with the user's own program for it.
    virtual void open(const QUrl& url) = 0;
    /// Opens the place where the user grants this permission.
    virtual void openPrivacyPane(PrivacyPane pane) = 0;
};

}  // namespace parlivo
