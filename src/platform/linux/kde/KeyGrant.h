// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SessionHint.h"

#include <QString>

#include <utility>
#include <vector>

namespace parlivo::kde {

/// KWin's leave to press keys (org_kde_kwin_fake_input): it is given to programs whose desktop file asks for
/// it (X-KDE-Wayland-Interfaces) and names the program by its full path. The installed desktop file names the
/// command instead, so that a moved installation keeps working; hence one of the user's own, which no menu
/// shows. KWin looks at it when a program connects, so that it counts for connections made since. Main
/// thread.
class KeyGrant {
  public:
    /// `program` is the full path of this program, `folder` the user's folder of desktop files.
    KeyGrant(QString program, QString folder) : program_(std::move(program)), folder_(std::move(folder)) {}

    bool isWritten() const;
    /// Writes the desktop file, and has KDE read it.
    void write() const;

    /// What is to be done in a session that has not given it.
    std::vector<SessionHint> hints() const;

  private:
    QString file() const;
    QByteArray content() const;

    QString program_;
    QString folder_;
};

}  // namespace parlivo::kde
