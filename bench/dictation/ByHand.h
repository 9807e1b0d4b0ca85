// SPDX-License-Identifier: MIT
#pragma once

#include "dictation/Testbed.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <csignal>
#include <utility>

namespace parlivo::bench {

/// The user of a script, which some program of the desktop starts and tells when the key is pressed and
/// released.
class ByHand : public DictationMethod {
  public:
    ByHand(QString script, std::chrono::milliseconds delay) : script_(std::move(script)), delay_(delay) {}
    void press() override {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(script_, {folder_.path(), QString::number(delay_.count())});
    }
    void release() override { ::kill(static_cast<pid_t>(process_.processId()), SIGUSR1); }
    bool isOver() override { return process_.state() == QProcess::NotRunning; }

  private:
    const QString script_;
    const std::chrono::milliseconds delay_;
    QTemporaryDir folder_;
    QProcess process_;
};

}  // namespace parlivo::bench
