# SPDX-License-Identifier: MIT
# The relocatable folder Parlivo.app, put together in the build folder: program, resources, Info.plist, engines.

set(PARLIVO_BUNDLE ${PROJECT_BINARY_DIR}/Parlivo.app)
set(bundle_resources ${PARLIVO_BUNDLE}/Contents/Resources)

if(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
    # CMake makes the bundle and fills in its Info.plist; the rest goes into the same folder.
    set_target_properties(Parlivo PROPERTIES
        MACOSX_BUNDLE ON
        MACOSX_BUNDLE_INFO_PLIST ${PROJECT_SOURCE_DIR}/resources/macos/Info.plist.in
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
else()
    configure_file(${PROJECT_SOURCE_DIR}/resources/Info.plist.in ${PARLIVO_BUNDLE}/Contents/Info.plist @ONLY)
    set_target_properties(Parlivo PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PARLIVO_BUNDLE}/Contents/MacOS)
endif()

# bundle_resource(source destination): keeps Contents/Resources/destination equal to the file.
function(bundle_resource source destination)
    set(target ${bundle_resources}/${destination})
    add_custom_command(OUTPUT ${target}
                       COMMAND ${CMAKE_COMMAND} -E copy ${source} ${target}
                       DEPENDS ${source} VERBATIM)
    set_property(GLOBAL APPEND PROPERTY PARLIVO_BUNDLED ${target})
endfunction()

foreach(folder symbols icons sounds help)
    file(GLOB_RECURSE files CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/resources
         ${PROJECT_SOURCE_DIR}/resources/${folder}/*)
    foreach(file ${files})
        bundle_resource(${PROJECT_SOURCE_DIR}/resources/${file} ${file})
    endforeach()
endforeach()

if(CMAKE_CROSSCOMPILING)
    include(ExternalProject)
    set(host_tools ${PROJECT_BINARY_DIR}/host)
    ExternalProject_Add(host_tools
        SOURCE_DIR ${PROJECT_SOURCE_DIR}/cmake/host
        BINARY_DIR ${host_tools}
        CMAKE_ARGS -DCMAKE_BUILD_TYPE=Release
        BUILD_BYPRODUCTS ${host_tools}/render_icon
        INSTALL_COMMAND "")
    add_executable(render_icon IMPORTED)
    set_target_properties(render_icon PROPERTIES IMPORTED_LOCATION ${host_tools}/render_icon)
    add_dependencies(render_icon host_tools)
else()
    add_executable(render_icon ${PROJECT_SOURCE_DIR}/tools/RenderIcon.cpp)
    target_link_libraries(render_icon PRIVATE parlivo_options Qt6::Svg)
endif()
set(icon_drawing ${PROJECT_SOURCE_DIR}/resources/icons/it.parlivo.Parlivo.svg)

# icon_pictures(variable folder size...): draws the application's icon at these sizes.
function(icon_pictures variable folder)
    list(TRANSFORM ARGN REPLACE "(.+)" "${folder}/\\1x\\1/apps/it.parlivo.Parlivo.png" OUTPUT_VARIABLE pictures)
    add_custom_command(OUTPUT ${pictures}
                       COMMAND render_icon ${icon_drawing} ${folder} it.parlivo.Parlivo ${ARGN}
                       DEPENDS render_icon ${icon_drawing} VERBATIM)
    set(${variable} ${pictures} PARENT_SCOPE)
endfunction()

if(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
    icon_pictures(pictures ${PROJECT_BINARY_DIR}/icon 16 32 64 128 256 512 1024)
    set(icon ${bundle_resources}/Parlivo.icns)
    set(make_icns ${PROJECT_SOURCE_DIR}/tools/make-icns)
    add_custom_command(OUTPUT ${icon} COMMAND ${make_icns} ${icon} ${pictures} DEPENDS ${make_icns} ${pictures} VERBATIM)
    set_property(GLOBAL APPEND PROPERTY PARLIVO_BUNDLED ${icon})
else()
    # For desktops that want pictures (freedesktop.org's icon theme "hicolor").
    set(icon_theme ${bundle_resources}/icons/hicolor)
    icon_pictures(pictures ${icon_theme} 16 22 24 32 48 64 128 256 512)
    set_property(GLOBAL APPEND PROPERTY PARLIVO_BUNDLED ${pictures})
endif()

# Qt's own words in the interface's language.
get_target_property(qmake Qt6::qmake IMPORTED_LOCATION)
set(PARLIVO_QT_TRANSLATIONS "" CACHE PATH "Folder with qtbase_it.qm; without it, Qt's own")
set(qt_translations ${PARLIVO_QT_TRANSLATIONS})
if(NOT qt_translations)
    execute_process(COMMAND ${qmake} -query QT_INSTALL_TRANSLATIONS
                    OUTPUT_VARIABLE qt_translations OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
if(NOT EXISTS ${qt_translations}/qtbase_it.qm)
    message(FATAL_ERROR "Qt's Italian translation is missing: ${qt_translations}/qtbase_it.qm")
endif()
bundle_resource(${qt_translations}/qtbase_it.qm translations/qtbase_it.qm)

# What the interface says on this system where its own words speak of macOS.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    execute_process(COMMAND ${qmake} -query QT_HOST_BINS
                    OUTPUT_VARIABLE qt_programs OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    find_program(PARLIVO_LRELEASE NAMES lrelease lrelease-qt6 lrelease6 HINTS ${qt_programs} NO_DEFAULT_PATH REQUIRED
                 DOC "Qt 6's compiler of translations")
    set(catalogue ${PROJECT_SOURCE_DIR}/translations/parlivo_linux.ts)
    set(target ${bundle_resources}/translations/parlivo.qm)
    add_custom_command(OUTPUT ${target}
                       COMMAND ${PARLIVO_LRELEASE} -silent -nounfinished ${catalogue} -qm ${target}
                       DEPENDS ${catalogue} VERBATIM)
    set_property(GLOBAL APPEND PROPERTY PARLIVO_BUNDLED ${target})
    # macOS has all signs itself.
    bundle_resource(${PROJECT_SOURCE_DIR}/resources/fonts/parlivo-signs.ttf fonts/parlivo-signs.ttf)
endif()

bundle_resource(${PROJECT_SOURCE_DIR}/LICENSE licenses/Parlivo/LICENSE)
bundle_resource(${PROJECT_SOURCE_DIR}/docs/third-party.md licenses/third-party.md)

# bundle_engine_for_any_processor(engine): the folder with the server and its libraries, and a link to the server.
function(bundle_engine_for_any_processor engine)
    file(GLOB variants ${PARLIVO_ENGINES}/${engine}.cpp/libggml-cpu-*.so)
    if(NOT variants)
        message(FATAL_ERROR "No libggml-cpu-*.so, without which ${engine}-server computes nothing: ${PARLIVO_ENGINES}/${engine}.cpp")
    endif()
    file(GLOB files RELATIVE ${PARLIVO_ENGINES} ${PARLIVO_ENGINES}/${engine}.cpp/*)
    foreach(file ${files})
        bundle_resource(${PARLIVO_ENGINES}/${file} ${file})
    endforeach()
    set(program ${engine}.cpp/${engine}-server)
    set(link ${bundle_resources}/${engine}-server)
    add_custom_command(OUTPUT ${link}
                       COMMAND ${CMAKE_COMMAND} -E create_symlink ${program} ${link}
                       DEPENDS ${bundle_resources}/${program} VERBATIM)
    set_property(GLOBAL APPEND PROPERTY PARLIVO_BUNDLED ${link})
endfunction()

if(PARLIVO_ENGINES)
    foreach(engine whisper llama)
        if(NOT EXISTS ${PARLIVO_ENGINES}/${engine}-server)
            message(FATAL_ERROR "PARLIVO_ENGINES holds no ${engine}-server: ${PARLIVO_ENGINES}")
        endif()
        if(IS_DIRECTORY ${PARLIVO_ENGINES}/${engine}.cpp)
            bundle_engine_for_any_processor(${engine})
        else()
            bundle_resource(${PARLIVO_ENGINES}/${engine}-server ${engine}-server)
        endif()
    endforeach()
    file(GLOB_RECURSE licences RELATIVE ${PARLIVO_ENGINES} ${PARLIVO_ENGINES}/licenses/*)
    foreach(licence ${licences})
        bundle_resource(${PARLIVO_ENGINES}/${licence} ${licence})
    endforeach()
else()
    message(STATUS "No PARLIVO_ENGINES: the bundle is built without its engines")
endif()

get_property(bundled GLOBAL PROPERTY PARLIVO_BUNDLED)
add_custom_target(bundle ALL DEPENDS ${bundled})
add_dependencies(bundle Parlivo)
