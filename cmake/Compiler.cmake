# SPDX-License-Identifier: MIT
# One place for what every target of ours is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)

set(PARLIVO_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
option(PARLIVO_FUZZ "Build for libFuzzer, which needs clang" OFF)

# What every target of ours is compiled and linked with: rooms hand it on, all others link it by name. Warnings are errors
# only where the preset says so (CMAKE_COMPILE_WARNING_AS_ERROR), so that a newer compiler stops no packager.
add_library(parlivo_options INTERFACE)
target_compile_options(parlivo_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-align)
# Implicit conversions between QString and char* hide encodings; cast them by name.
target_compile_definitions(parlivo_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(PARLIVO_SANITIZE)
    target_compile_options(parlivo_options INTERFACE -fsanitize=${PARLIVO_SANITIZE} -fno-omit-frame-pointer -g)
    target_link_options(parlivo_options INTERFACE -fsanitize=${PARLIVO_SANITIZE})
    # The optimiser's flow analysis is unreliable under instrumentation.
    target_compile_options(parlivo_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-error=maybe-uninitialized>)
else()
    target_compile_options(parlivo_options INTERFACE -fstack-protector-strong)
    # glibc's checks of buffer sizes need the optimiser.
    target_compile_definitions(parlivo_options INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
    if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
        target_compile_options(parlivo_options INTERFACE -fstack-clash-protection)
        target_link_options(parlivo_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
    # Control-flow protection is a feature of x86 processors (Intel CET).
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
        target_compile_options(parlivo_options INTERFACE -fcf-protection)
    endif()
endif()

if(PARLIVO_FUZZ)
    # A finding ends the run, whatever it is.
    target_compile_options(parlivo_options INTERFACE -fsanitize=fuzzer-no-link -fno-sanitize-recover=all)
endif()

# parlivo_room(name SOURCES ... ROOMS ... LIBRARIES ...): one library a room. ROOMS are those that the table in
# docs/architecture.md gives to its folder; `tools/lint rooms` compares them.
function(parlivo_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;ROOMS;LIBRARIES" ${ARGN})
    add_library(parlivo_${name} STATIC ${ROOM_SOURCES})
    target_include_directories(parlivo_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    list(TRANSFORM ROOM_ROOMS PREPEND parlivo_)
    target_link_libraries(parlivo_${name} PUBLIC parlivo_options ${ROOM_ROOMS} ${ROOM_LIBRARIES})
endfunction()
