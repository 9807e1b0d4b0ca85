# One place for what every target of ours is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)

set(PARLIVO_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
option(PARLIVO_FUZZ "Build for libFuzzer, which needs clang" OFF)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
                    -Wold-style-cast -Wcast-align
                    -Werror)
# Implicit conversions between QString and char* hide encodings; cast them by name.
add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS
                        QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(PARLIVO_SANITIZE)
    add_compile_options(-fsanitize=${PARLIVO_SANITIZE} -fno-omit-frame-pointer -g)
    add_link_options(-fsanitize=${PARLIVO_SANITIZE})
    # The optimiser's flow analysis is unreliable under instrumentation.
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-error=maybe-uninitialized>)
else()
    add_compile_options(-fstack-protector-strong -fstack-clash-protection -fcf-protection)
    add_compile_definitions($<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
    add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
endif()

if(PARLIVO_FUZZ)
    # A finding ends the run, whatever it is.
    add_compile_options(-fsanitize=fuzzer-no-link -fno-sanitize-recover=all)
endif()

# parlivo_room(name SOURCES ... ROOMS ... LIBRARIES ...): one library a room; what a room may use is what it links.
function(parlivo_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;ROOMS;LIBRARIES" ${ARGN})
    add_library(parlivo_${name} STATIC ${ROOM_SOURCES})
    target_include_directories(parlivo_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    list(TRANSFORM ROOM_ROOMS PREPEND parlivo_)
    target_link_libraries(parlivo_${name} PUBLIC ${ROOM_ROOMS} ${ROOM_LIBRARIES})
endfunction()
