// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace parlivo::sway {

/// The bindings that are made in one sway, in the file Parlivo.sway of the session's folder
/// (XDG_RUNTIME_DIR): its first line is sway's socket, each further one a chord. It outlives a killed program
/// so that the next one can undo what that left.
class BindingRecord {
  public:
    /// For the sway that listens on this socket.
    explicit BindingRecord(QString socketPath);

    /// The chords recorded for this sway. Those of another one are gone with it.
    QList<QByteArray> chords() const;
    /// Records these in place of all others; none removes the file. Where it cannot be written, nothing is
    /// recorded.
    void write(const QList<QByteArray>& chords) const;

  private:
    const QString socketPath_;
    const QString file_;
};

}  // namespace parlivo::sway
