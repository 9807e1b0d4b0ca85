// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

/// Owners for what libxcb hands out.
namespace parlivo::x11 {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

struct DisconnectDeleter {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

/// A connection; never null after xcb_connect, but possibly in error (xcb_connection_has_error).
using ConnectionHandle = std::unique_ptr<xcb_connection_t, DisconnectDeleter>;

/// The answer to a request; null when the request failed.
template <typename T>
using Reply = std::unique_ptr<T, FreeDeleter>;

using EventHandle = Reply<xcb_generic_event_t>;
using ErrorHandle = Reply<xcb_generic_error_t>;

/// Takes ownership of an answer of any type: `const auto reply = owned(xcb_..._reply(...));`
template <typename T>
Reply<T> owned(T* answer) {
    return Reply<T>(answer);
}

}  // namespace parlivo::x11
