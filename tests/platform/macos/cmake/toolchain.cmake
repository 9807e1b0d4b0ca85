# SPDX-License-Identifier: MIT
# Has CMake generate the build files for macOS where no macOS is at hand: nothing is compiled or linked with them. Qt and
# the libraries found are this system's.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR arm64)
find_program(PARLIVO_CLANGXX clang++ REQUIRED)
foreach(language CXX OBJCXX)
    set(CMAKE_${language}_COMPILER ${PARLIVO_CLANGXX})
endforeach()
set(CMAKE_INSTALL_NAME_TOOL true)
# Nothing that CMake tries out can be linked.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_LIBRARY_ARCHITECTURE ${PARLIVO_LIBRARY_ARCHITECTURE})
list(APPEND CMAKE_PREFIX_PATH /usr)
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
