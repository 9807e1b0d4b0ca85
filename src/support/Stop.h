// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

/// A request to stop that one side makes once and others ask for or are called by, as in the standard's
/// header <stop_token>, which the standard library of macOS does not have yet. Any thread.
namespace parlivo {

namespace detail {

/// What a source, its tokens and their callbacks share. Callbacks run under the mutex, so that the end of a
/// callback waits for it; recursive, so that it may end itself.
struct StopState {
    std::recursive_mutex mutex;
    bool requested = false;                               // under mutex
    std::vector<const std::function<void()>*> callbacks;  // under mutex
};

}  // namespace detail

/// Tells whether its source was asked to stop. One without a source never is.
class StopToken {
  public:
    StopToken() = default;

    bool stopRequested() const {
        if (!state_) return false;
        const std::lock_guard lock(state_->mutex);
        return state_->requested;
    }

  private:
    friend class StopSource;
    friend class StopCallback;
    explicit StopToken(std::shared_ptr<detail::StopState> state) : state_(std::move(state)) {}

    std::shared_ptr<detail::StopState> state_;
};

class StopSource {
  public:
    StopToken token() const { return StopToken(state_); }
    bool stopRequested() const { return token().stopRequested(); }

    /// Calls every callback, on this thread; a second request does nothing.
    void requestStop() {
        const std::lock_guard lock(state_->mutex);
        if (std::exchange(state_->requested, true)) return;
        while (!state_->callbacks.empty()) {
            const auto* const callback = state_->callbacks.back();
            state_->callbacks.pop_back();
            (*callback)();
        }
    }

  private:
    std::shared_ptr<detail::StopState> state_ = std::make_shared<detail::StopState>();
};

/// Calls `callback` once when the token's source is asked to stop, or at once if it already was. Its end
/// takes the callback back, or waits for one that is under way on another thread.
class StopCallback {
  public:
    StopCallback(const StopToken& token, std::function<void()> callback)
        : state_(token.state_), callback_(std::move(callback)) {
        if (!state_) return;
        const std::lock_guard lock(state_->mutex);
        if (state_->requested)
            callback_();
        else
            state_->callbacks.push_back(&callback_);
    }
    ~StopCallback() {
        if (!state_) return;
        const std::lock_guard lock(state_->mutex);
        std::erase(state_->callbacks, &callback_);
    }
    StopCallback(const StopCallback&) = delete;
    StopCallback& operator=(const StopCallback&) = delete;

  private:
    std::shared_ptr<detail::StopState> state_;
    const std::function<void()> callback_;
};

}  // namespace parlivo
