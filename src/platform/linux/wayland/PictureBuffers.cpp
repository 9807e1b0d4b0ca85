// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/PictureBuffers.h"

#include "platform/linux/wayland/SharedMemory.h"

#include <wayland-client-protocol.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace parlivo::wayland {

namespace {

/// One is on the screen, one is about to be, one is drawn.
constexpr std::size_t mostBuffers = 3;

}  // namespace

class PictureBuffers::Buffer {
  public:
    Buffer(wl_shm* shm, SharedMemory memory, QSize size, int stride)
        : memory_(std::move(memory)), size_(size) {
        wl_shm_pool* const pool =
            wl_shm_create_pool(shm, memory_.descriptor(), static_cast<std::int32_t>(memory_.bytes().size()));
        handle_ =
            wl_shm_pool_create_buffer(pool, 0, size.width(), size.height(), stride, WL_SHM_FORMAT_ARGB8888);
        wl_shm_pool_destroy(pool);
        static const wl_buffer_listener listener{
            .release = [](void* data, wl_buffer*) { static_cast<Buffer*>(data)->isFree = true; }};
        wl_buffer_add_listener(handle_, &listener, this);
    }
    ~Buffer() { wl_buffer_destroy(handle_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    QSize size() const { return size_; }
    wl_buffer* take(const QImage& picture) {
        std::memcpy(memory_.bytes().data(), picture.constBits(), memory_.bytes().size());
        isFree = false;
        return handle_;
    }

    bool isFree = true;

  private:
    SharedMemory memory_;
    QSize size_;
    wl_buffer* handle_ = nullptr;
};

PictureBuffers::PictureBuffers(wl_shm* memory) : memory_(memory) {}
PictureBuffers::~PictureBuffers() = default;

wl_buffer* PictureBuffers::fill(const QImage& picture) {
    Buffer* const buffer = freeBuffer(picture);
    return buffer ? buffer->take(picture) : nullptr;
}

PictureBuffers::Buffer* PictureBuffers::freeBuffer(const QImage& picture) {
    std::erase_if(buffers_,
                  [&](const auto& buffer) { return buffer->isFree && buffer->size() != picture.size(); });
    const auto found = std::ranges::find_if(
        buffers_, [&](const auto& buffer) { return buffer->isFree && buffer->size() == picture.size(); });
    if (found != buffers_.end()) return found->get();
    if (buffers_.size() >= mostBuffers) return nullptr;
    auto memory = SharedMemory::make(static_cast<std::size_t>(picture.sizeInBytes()));
    if (!memory) return nullptr;
    buffers_.push_back(std::make_unique<Buffer>(memory_, *std::move(memory), picture.size(),
                                                static_cast<int>(picture.bytesPerLine())));
    return buffers_.back().get();
}

}  // namespace parlivo::wayland
