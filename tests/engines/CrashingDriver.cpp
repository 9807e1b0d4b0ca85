// SPDX-License-Identifier: MIT

// A Vulkan driver that ends the program which uses it: when it is loaded, when the first instance is made, or
// at the first computation, as the environment variable PARLIVO_TEST_CRASH says ("load", "create",
// "compute"). Before that it adds the program's name to the file PARLIVO_TEST_CRASHES. To come as far as a
// computation it does all else by the driver that PARLIVO_TEST_DRIVER names. What a driver has to offer:
// LoaderDriverInterface.md of the Vulkan loader.

#include <dlfcn.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace {

void crashIfAt(const char* moment) {
    const char* chosen = std::getenv("PARLIVO_TEST_CRASH");
    const char* crashes = std::getenv("PARLIVO_TEST_CRASHES");
    if (!chosen || !crashes || std::strcmp(chosen, moment) != 0) return;
    std::ofstream(crashes, std::ios::app) << program_invocation_short_name << std::endl;
    std::raise(SIGSEGV);
}

[[gnu::constructor]] void load() {
    crashIfAt("load");
}

constexpr int success = 0;

int createInstance(const void*, const void*, void*) {
    crashIfAt("create");
    return -1;
}

int extensions(const char*, std::uint32_t* count, void*) {
    *count = 0;
    return success;
}

void dispatch(void*, std::uint32_t, std::uint32_t, std::uint32_t) {
    crashIfAt("compute");
}

using Function = void (*)();
using Lookup = Function (*)(void* object, const char* name);

/// A function of the driver that this one stands before; nullptr if there is none.
template <typename F>
F ofTheOther(const char* name) {
    const char* path = std::getenv("PARLIVO_TEST_DRIVER");
    static void* const driver = path ? dlopen(path, RTLD_NOW | RTLD_LOCAL) : nullptr;
    return driver ? reinterpret_cast<F>(dlsym(driver, name)) : nullptr;
}

Lookup otherDeviceLookup = nullptr;

Function deviceFunction(void* device, const char* name) {
    if (std::strcmp(name, "vkCmdDispatch") == 0) return reinterpret_cast<Function>(dispatch);
    return otherDeviceLookup(device, name);
}

}  // namespace

extern "C" int vk_icdNegotiateLoaderICDInterfaceVersion(std::uint32_t* version) {
    if (const auto other = ofTheOther<int (*)(std::uint32_t*)>("vk_icdNegotiateLoaderICDInterfaceVersion")) {
        return other(version);
    }
    *version = 5;
    return success;
}

extern "C" Function vk_icdGetPhysicalDeviceProcAddr(void* instance, const char* name) {
    const auto other = ofTheOther<Lookup>("vk_icdGetPhysicalDeviceProcAddr");
    return other ? other(instance, name) : nullptr;
}

extern "C" Function vk_icdGetInstanceProcAddr(void* instance, const char* name) {
    if (const auto other = ofTheOther<Lookup>("vk_icdGetInstanceProcAddr")) {
        if (std::strcmp(name, "vkGetDeviceProcAddr") == 0) {
            otherDeviceLookup = reinterpret_cast<Lookup>(other(instance, name));
            return reinterpret_cast<Function>(deviceFunction);
        }
        return other(instance, name);
    }
    if (std::strcmp(name, "vkCreateInstance") == 0) return reinterpret_cast<Function>(createInstance);
    if (std::strcmp(name, "vkEnumerateInstanceExtensionProperties") == 0) {
        return reinterpret_cast<Function>(extensions);
    }
    return nullptr;
}
