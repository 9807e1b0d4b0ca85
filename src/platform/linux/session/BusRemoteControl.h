// SPDX-License-Identifier: MIT
#pragma once

#include "platform/RemoteControl.h"
#include "platform/linux/session/InstanceLock.h"

#include <memory>

namespace parlivo {

class RemoteObject;

/// The name it.parlivo.Parlivo on the session bus; where there is no bus, or it refuses the name, a lock
/// file in the session's runtime folder keeps the program to one instance, which takes no commands.
class BusRemoteControl : public RemoteControl {
  public:
    BusRemoteControl();
    ~BusRemoteControl() override;
    BusRemoteControl(const BusRemoteControl&) = delete;
    BusRemoteControl& operator=(const BusRemoteControl&) = delete;

    Instance registerInstance() override;
    void serve(RemoteTarget target) override;
    void announceState(const QString& state) override;
    Delivery send(RemoteCommand command) override;
    QString whyUnavailable() const override;

  private:
    InstanceLock lock_;
    std::unique_ptr<RemoteObject> object_;
    /// Whether the one instance is another that has no name on the bus.
    bool hiddenInstance_ = false;
};

}  // namespace parlivo
