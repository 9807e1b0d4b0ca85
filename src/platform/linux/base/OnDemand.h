// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace parlivo {

/// An object that is made when it is first asked for. Any thread may be the first.
template <typename T>
class OnDemand {
  public:
    template <typename... Arguments>
    T& get(Arguments&&... arguments) {
        const std::lock_guard lock(mutex_);
        if (!object_) object_ = std::make_unique<T>(std::forward<Arguments>(arguments)...);
        return *object_;
    }

  private:
    std::mutex mutex_;
    std::unique_ptr<T> object_;  // under mutex_
};

}  // namespace parlivo
