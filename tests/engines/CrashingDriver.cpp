// SPDX-License-Identifier: MIT

// A Vulkan driver that ends the program which uses it: when it is loaded, or when the first instance is made,
// as the environment variable PARLIVO_TEST_CRASH says ("load", "create"). Before that it adds the program's
// name to the file PARLIVO_TEST_CRASHES. What a driver has to offer: LoaderDriverInterface.md of the Vulkan
// loader.

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

using Function = void (*)();

}  // namespace

extern "C" int vk_icdNegotiateLoaderICDInterfaceVersion(std::uint32_t* version) {
    *version = 5;
    return success;
}

extern "C" Function vk_icdGetInstanceProcAddr(void*, const char* name) {
    if (std::strcmp(name, "vkCreateInstance") == 0) return reinterpret_cast<Function>(createInstance);
    if (std::strcmp(name, "vkEnumerateInstanceExtensionProperties") == 0) {
        return reinterpret_cast<Function>(extensions);
    }
    return nullptr;
}
