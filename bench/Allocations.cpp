// SPDX-License-Identifier: MIT
#include "Allocations.h"

#include <cstddef>

// The C library's own functions under the names that it keeps for programs that replace them (glibc manual,
// "Replacing malloc").
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {
thread_local std::uint64_t count = 0;
}

extern "C" void* malloc(std::size_t size) {
    ++count;
    return __libc_malloc(size);
}

extern "C" void* calloc(std::size_t number, std::size_t size) {
    ++count;
    return __libc_calloc(number, size);
}

extern "C" void* realloc(void* memory, std::size_t size) {
    ++count;
    return __libc_realloc(memory, size);
}

std::uint64_t parlivo::bench::allocations() {
    return count;
}
