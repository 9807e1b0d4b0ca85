// SPDX-License-Identifier: MIT

// Preloaded into a program (LD_PRELOAD) and those that it starts, stops one of them in the moment before a
// certain step, so that a test can end it right there. PARLIVO_HALT says which: PROGRAM:CALL:TEXT, where CALL
// is
//   start    the program PROGRAM begins
//   unlink   it deletes a file whose path contains TEXT
//   rename   it gives a file a path that contains TEXT
//   mkdir    it makes a folder whose path contains TEXT
//   exchange it puts a folder in the place of one whose path contains TEXT (renameat2, RENAME_EXCHANGE)
// A process that has stopped is in the state T (proc(5)).

#include <dlfcn.h>
#include <sys/types.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void haltAt(std::string_view call, std::string_view path) {
    const char* const wanted = std::getenv("PARLIVO_HALT");
    if (wanted == nullptr) return;
    const std::string step = std::string(program_invocation_short_name) + ':' + std::string(call) + ':';
    const std::string_view where(wanted);
    if (!where.starts_with(step) || path.find(where.substr(step.size())) == std::string_view::npos) return;
    // To this very thread, which would otherwise go on while another one takes the signal.
    raise(SIGSTOP);
}

/// The function that this one stands before.
template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

[[gnu::constructor]] void begin() {
    haltAt("start", "");
}

}  // namespace

extern "C" int unlink(const char* path) noexcept {
    haltAt("unlink", path);
    return real<int(const char*)>("unlink")(path);
}

extern "C" int rename(const char* from, const char* to) noexcept {
    haltAt("rename", to);
    return real<int(const char*, const char*)>("rename")(from, to);
}

extern "C" int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    haltAt("rename", to);
    return real<int(int, const char*, int, const char*)>("renameat")(fromFolder, from, toFolder, to);
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned flags) noexcept {
    haltAt("exchange", to);
    return real<int(int, const char*, int, const char*, unsigned)>("renameat2")(fromFolder, from, toFolder,
                                                                                to, flags);
}

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    haltAt("mkdir", path);
    return real<int(const char*, mode_t)>("mkdir")(path, mode);
}
