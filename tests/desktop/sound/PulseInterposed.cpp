// SPDX-License-Identifier: MIT
#include "desktop/sound/PulseInterposed.h"

#include <dlfcn.h>
#include <pulse/pulseaudio.h>
#include <unistd.h>

namespace {

namespace interposed = parlivo::desktop::interposed;

template <class Function>
Function* original(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int pa_stream_connect_record(pa_stream* stream, const char* device, const pa_buffer_attr* attributes,
                             pa_stream_flags_t flags) {
    ++interposed::recordings;
    return original<decltype(pa_stream_connect_record)>("pa_stream_connect_record")(stream, device,
                                                                                    attributes, flags);
}

int pa_stream_write(pa_stream* stream, const void* data, size_t bytes, pa_free_cb_t release, int64_t offset,
                    pa_seek_mode_t seek) {
    ++interposed::writes;
    return original<decltype(pa_stream_write)>("pa_stream_write")(stream, data, bytes, release, offset, seek);
}

void pa_threaded_mainloop_wait(pa_threaded_mainloop* loop) {
    if (gettid() == getpid()) ++interposed::waits;
    original<decltype(pa_threaded_mainloop_wait)>("pa_threaded_mainloop_wait")(loop);
}

pa_operation* pa_context_get_source_info_by_index(pa_context* context, uint32_t index,
                                                  pa_source_info_cb_t answer, void* data) {
    if (interposed::refuseSourceQuestions) return nullptr;
    return original<decltype(pa_context_get_source_info_by_index)>("pa_context_get_source_info_by_index")(
        context, index, answer, data);
}

}  // extern "C"
