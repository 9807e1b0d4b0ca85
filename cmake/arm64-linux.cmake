# SPDX-License-Identifier: MIT
# Cross-compiles for Linux on arm64 with Debian's compiler and a folder that holds Debian's packages for arm64, unpacked:
#
# cmake --toolchain cmake/arm64-linux.cmake -DPARLIVO_SYSROOT=FOLDER
#
# Qt's own tools come from this machine, so that its Qt must have the version of the folder's. tests/systems/arm64 makes such
# a folder.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(PARLIVO_SYSROOT "$ENV{PARLIVO_SYSROOT}" CACHE PATH "Debian's packages for arm64, unpacked")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PARLIVO_SYSROOT)
if(NOT IS_DIRECTORY "${PARLIVO_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
    message(FATAL_ERROR "PARLIVO_SYSROOT is not a folder with packages for arm64: '${PARLIVO_SYSROOT}'")
endif()
set(CMAKE_SYSROOT ${PARLIVO_SYSROOT})

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR}
    ${PARLIVO_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${PARLIVO_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${PARLIVO_SYSROOT})
set(QT_HOST_PATH /usr CACHE PATH "Where this machine's Qt is")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake CACHE PATH "Where it describes itself to CMake")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L ${PARLIVO_SYSROOT})
