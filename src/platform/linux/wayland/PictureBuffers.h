// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

#include <memory>
#include <vector>

struct wl_buffer;
struct wl_shm;

namespace parlivo::wayland {

/// The pictures that a surface shows in turn, in memory shared with the compositor. Connection thread.
class PictureBuffers {
  public:
    explicit PictureBuffers(wl_shm* memory);
    ~PictureBuffers();
    PictureBuffers(const PictureBuffers&) = delete;
    PictureBuffers& operator=(const PictureBuffers&) = delete;

    /// A buffer with a copy of this picture (format ARGB32_Premultiplied), to be attached at once; null while
    /// the compositor still reads all of them.
    wl_buffer* fill(const QImage& picture);

  private:
    class Buffer;

    Buffer* freeBuffer(const QImage& picture);

    wl_shm* memory_;
    std::vector<std::unique_ptr<Buffer>> buffers_;
};

}  // namespace parlivo::wayland
