// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace parlivo::gnome {

/// Writes bytes into a pipe as fast as its reader takes them, and then closes it. Its thread needs an event
/// loop, and SIGPIPE blocked.
class PipeWriter : public QObject {
    Q_OBJECT

  public:
    /// Nothing is written before the event loop comes round.
    PipeWriter(UniqueFd pipe, QByteArray bytes, QObject* parent);

  Q_SIGNALS:
    /// Once: everything is written, or the reader has gone.
    void finished(bool whole);

  private:
    void write();

    UniqueFd pipe_;
    const QByteArray bytes_;
    qsizetype written_ = 0;
    QSocketNotifier notifier_;
};

}  // namespace parlivo::gnome
