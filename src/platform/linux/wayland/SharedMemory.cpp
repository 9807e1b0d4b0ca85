// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/SharedMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <utility>

namespace parlivo::wayland {

std::optional<SharedMemory> SharedMemory::make(std::size_t size) {
    UniqueFd file(memfd_create("parlivo", MFD_CLOEXEC));
    if (!file || ftruncate(file.get(), static_cast<off_t>(size)) != 0) return std::nullopt;
    void* const address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (address == MAP_FAILED) return std::nullopt;
    return SharedMemory(std::move(file), {static_cast<std::byte*>(address), size});
}

SharedMemory::SharedMemory(UniqueFd file, std::span<std::byte> bytes)
    : file_(std::move(file)), bytes_(bytes) {}

SharedMemory::SharedMemory(SharedMemory&& other) noexcept
    : file_(std::move(other.file_)), bytes_(std::exchange(other.bytes_, {})) {}

SharedMemory::~SharedMemory() {
    if (!bytes_.empty()) munmap(bytes_.data(), bytes_.size());
}

}  // namespace parlivo::wayland
