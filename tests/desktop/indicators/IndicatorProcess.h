// SPDX-License-Identifier: MIT
#pragma once

#include "support/Waiting.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace parlivo::desktop {

/// The program's indicators alone (IndicatorsMain.cpp), running beside the test; killed when this is
/// destroyed.
class IndicatorProcess {
  public:
    /// Returns when it runs. Throws Error if it does not start.
    explicit IndicatorProcess(
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    ~IndicatorProcess();
    IndicatorProcess(const IndicatorProcess&) = delete;
    IndicatorProcess& operator=(const IndicatorProcess&) = delete;

    /// Carries out one line and returns what it answered before "done". Throws Error when that takes too
    /// long.
    QStringList perform(const QString& line);

    /// The lines that it printed unasked, oldest first: "opening", "chosen settings".
    QStringList said() const { return said_; }
    void forgetSaid() { said_.clear(); }
    bool waitForWord(const QString& word);

    bool isRunning() const { return process_.state() == QProcess::Running; }
    qint64 processId() const { return process_.processId(); }

  private:
    void read();

    QProcess process_;
    QStringList said_;
    QStringList answers_;
};

}  // namespace parlivo::desktop
