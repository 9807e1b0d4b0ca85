// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace parlivo {

/// Owns a POSIX file descriptor and closes it at its end. -1 stands for none.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int descriptor) : descriptor_(descriptor) {}
    ~UniqueFd() { reset(); }
    UniqueFd(UniqueFd&& other) noexcept : descriptor_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

    /// Gives the descriptor away; the caller closes it.
    [[nodiscard]] int release() { return std::exchange(descriptor_, -1); }
    /// Closes the present descriptor and owns `descriptor` instead. errno stays as it is.
    void reset(int descriptor = -1) {
        const int previous = std::exchange(descriptor_, descriptor);
        if (previous < 0) return;
        const int error = errno;
        ::close(previous);
        errno = error;
    }

  private:
    int descriptor_ = -1;
};

}  // namespace parlivo
