// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

namespace parlivo {

/// The shared workspace, and the panes of the system settings by their addresses.
class MacWorkspace : public Workspace {
  public:
    void open(const QUrl& url) override;
    void openPrivacyPane(PrivacyPane pane) override;
};

}  // namespace parlivo
