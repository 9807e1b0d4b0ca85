// SPDX-License-Identifier: MIT
#pragma once

#include "platform/RemoteControl.h"

#include <QObject>

namespace parlivo {

/// The object that the running program puts on the session bus.
class RemoteObject : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "it.parlivo.Parlivo1")
    Q_PROPERTY(QString State READ state)
    Q_PROPERTY(QString StatusText READ statusText)
    Q_PROPERTY(QString Version READ version)

  public:
    explicit RemoteObject(RemoteTarget target) : target_(std::move(target)) {}

    QString state() const { return target_.state(); }
    QString statusText() const { return target_.statusText(); }
    QString version() const { return target_.version(); }

    // Named as the bus names them.
  public Q_SLOTS:
    void Press() { target_.perform(RemoteCommand::Press); }
    void Release() { target_.perform(RemoteCommand::Release); }
    void Toggle() { target_.perform(RemoteCommand::Toggle); }
    void ShowSettings() { target_.perform(RemoteCommand::ShowSettings); }
    void ShowFeedback() { target_.perform(RemoteCommand::ShowFeedback); }
    void Quit() { target_.perform(RemoteCommand::Quit); }

  Q_SIGNALS:
    void StateChanged(const QString& state);

  private:
    RemoteTarget target_;
};

}  // namespace parlivo
