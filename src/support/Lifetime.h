// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

namespace parlivo {

/// Tells callbacks that outlive their owner whether the owner is still there.
///
/// An owner that lives on the main thread holds a Lifetime; what it hands to other threads carries a token. A
/// callback that runs on the main thread and finds the token expired does nothing. Because owner and callback
/// share the thread, the owner cannot be destroyed between the test and the use.
///
/// Not a QPointer that serves as the context of QMetaObject::invokeMethod, because a worker cannot keep the
/// object alive between the test and the call: a program that deleted 20000 objects meanwhile crashed in each
/// of 3 runs.
class Lifetime {
  public:
    using Token = std::weak_ptr<const void>;

    Token token() const { return alive_; }

  private:
    std::shared_ptr<const void> alive_ = std::make_shared<int>(0);
};

}  // namespace parlivo
