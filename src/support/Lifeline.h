#pragma once

#include <memory>

namespace parlivo {

/// Tells callbacks that outlive their owner whether it is still there.
///
/// An owner that lives on the main thread holds a Lifeline; what it hands to other threads carries a Watch. A
/// callback that runs on the main thread and finds the Watch expired does nothing. Because owner and callback
/// share the thread, the owner cannot die between the test and the use.
class Lifeline {
  public:
    using Watch = std::weak_ptr<const void>;

    Watch watch() const { return token_; }

  private:
    std::shared_ptr<const void> token_ = std::make_shared<int>(0);
};

}  // namespace parlivo
