// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The compositor of the test, asked over its own socket (SWAYSOCK).
namespace parlivo::desktop::sway {

/// The application ids of all windows.
QStringList applications();
/// The application id of the window with the keyboard focus; empty if none has it.
QString focusedApplication();

/// What wl-paste gives for a place; `type` as it takes it.
QByteArray clipboard(const QStringList& options = {});
/// Another program takes the clipboard.
void copy(const QByteArray& content, const QStringList& options = {});

/// A terminal that writes what it gets into a file. Has the focus when this is constructed.
class Terminal {
  public:
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    static QString application();
    QByteArray received() const;

  private:
    QTemporaryDir folder_;
    QProcess process_;
};

}  // namespace parlivo::desktop::sway
