// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <cstddef>
#include <optional>
#include <span>

namespace parlivo::wayland {

/// Memory that the compositor can read, named by a file descriptor (memfd_create(2)).
class SharedMemory {
  public:
    /// nullopt if the system has none left.
    static std::optional<SharedMemory> make(std::size_t size);
    ~SharedMemory();
    SharedMemory(SharedMemory&& other) noexcept;
    SharedMemory& operator=(SharedMemory&&) = delete;
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    int descriptor() const { return file_.get(); }
    std::span<std::byte> bytes() const { return bytes_; }

  private:
    SharedMemory(UniqueFd file, std::span<std::byte> bytes);

    UniqueFd file_;
    std::span<std::byte> bytes_;
};

}  // namespace parlivo::wayland
