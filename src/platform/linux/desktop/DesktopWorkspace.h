// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Bundle.h"
#include "platform/SystemLog.h"
#include "platform/Workspace.h"

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace parlivo {

/// The user's own programs for addresses and files, by xdg-open, and the desktop's own settings.
///
/// What is opened belongs to the user and outlives this program. A program that cannot be started is reported
/// in the system log.
class DesktopWorkspace : public Workspace {
  public:
    /// `environment` is that of the programs it starts.
    DesktopWorkspace(const Bundle& bundle, SystemLog& log, const QProcessEnvironment& environment)
        : bundle_(bundle), log_(log), environment_(environment) {}

    void open(const QUrl& url) override;
    /// The desktop's sound settings, and the page of help on what typing needs: desktops have no
    /// permission to grant for that, but something may be missing.
    void openPrivacyPane(PrivacyPane pane) override;

  private:
    void openSoundSettings();
    void openHelp(const QString& page);
    void start(const QString& program, const QStringList& arguments);

    const Bundle& bundle_;
    SystemLog& log_;
    const QProcessEnvironment environment_;
};

}  // namespace parlivo
