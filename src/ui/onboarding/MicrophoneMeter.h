// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "platform/Permissions.h"

#include <QTimer>
#include <QWidget>

#include <atomic>
#include <memory>

class QProgressBar;
class QPushButton;

namespace parlivo {

class Label;

/// Shows how loud the microphone hears, or why it does not, with the way to the sound settings. It listens
/// only while it is on the screen and access is granted; nothing is kept. A microphone that comes later is
/// found.
class MicrophoneMeter : public QWidget {
    Q_OBJECT

  public:
    explicit MicrophoneMeter(QWidget* parent);
    ~MicrophoneMeter() override;
    MicrophoneMeter(const MicrophoneMeter&) = delete;
    MicrophoneMeter& operator=(const MicrophoneMeter&) = delete;

    void setStatus(MicrophoneStatus status);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void listen();
    void stop();
    void tryCapture();
    void showLevel();
    void explain(const QString& reason);

    MicrophoneStatus status_ = MicrophoneStatus::NotAsked;
    QProgressBar* bar_;
    Label* reason_;
    QPushButton* settings_;
    std::unique_ptr<AudioCapture> capture_;
    std::atomic<float> level_ = 0;           ///< written by the audio thread
    std::atomic<bool> interrupted_ = false;  ///< the same
    QTimer tick_;
    QTimer retry_;
};

}  // namespace parlivo
