// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/dictation/Program.h"

#include <QJsonObject>
#include <QString>

namespace parlivo::desktop {

/// A bundle whose engines are stand-ins: the program starts, asks and ends them like real ones, and they
/// answer at once. What the recogniser hears and the cleanup makes of it may be changed while they run.
class StubEngines {
  public:
    StubEngines();
    QString bundle() const { return bundle_.path(); }

    void setTranscript(const QString& text) const;
    void clean(const QString& text) const;

    static inline const QString recogniserUrl = QStringLiteral("http://127.0.0.1:8765/");
    static inline const QString cleanupUrl = QStringLiteral("http://127.0.0.1:8766/health");

  private:
    BundleCopy bundle_;
};

}  // namespace parlivo::desktop
