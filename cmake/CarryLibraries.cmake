# SPDX-License-Identifier: MIT
# Makes a bundle independent of the system's Qt: copies the libraries and Qt plug-ins that it needs into it, with run paths
# relative to where each lies, so that it can be unpacked anywhere.
#
# cmake -DBUNDLE=FOLDER -DQT_PLUGINS=FOLDER -DLIST=FILE -P CarryLibraries.cmake
#
# The paths of what was copied, as they are on this system, go to LIST, one a line.
cmake_minimum_required(VERSION 3.25)

set(contents ${BUNDLE}/Contents)
set(carried "")

# X11 and Wayland, pictures in SVG, the desktop's file dialogs, dead keys. No theme of GTK: it would bring GTK itself, or
# meet one of the system that fits other versions of the libraries.
set(plugins
    platforms/libqxcb.so
    platforms/libqwayland-generic.so
    wayland-shell-integration/libxdg-shell.so
    wayland-decoration-client/libbradient.so
    platformthemes/libqxdgdesktopportal.so
    platforminputcontexts/libcomposeplatforminputcontextplugin.so
    platforminputcontexts/libibusplatforminputcontextplugin.so
    imageformats/libqsvg.so
    iconengines/libqsvgicon.so)

# Every system has these, and they must fit its kernel, its loader and each other.
set(of_the_system
    "^ld-linux" "^lib(c|m|dl|rt|pthread|resolv|util|anl)\\.so" "^libstdc\\+\\+\\.so" "^libgcc_s\\.so"
    # Drivers of the graphics processor.
    "^libdrm" "^libgbm" "^libglapi" "^libvulkan" "^libnvidia" "^lib(GLX|EGL)_")

foreach(plugin ${plugins})
    if(NOT EXISTS ${QT_PLUGINS}/${plugin})
        message(FATAL_ERROR "Qt's plug-in ${plugin} is missing from ${QT_PLUGINS}: tools/setup package")
    endif()
    cmake_path(GET plugin PARENT_PATH folder)
    file(COPY ${QT_PLUGINS}/${plugin} DESTINATION ${contents}/plugins/${folder})
    list(APPEND modules ${contents}/plugins/${plugin})
    list(APPEND carried ${QT_PLUGINS}/${plugin})
endforeach()

file(GLOB engines LIST_DIRECTORIES false ${contents}/Resources/*-server)
file(GLOB engine_files ${contents}/Resources/*.cpp/*)
foreach(file ${engine_files})
    cmake_path(GET file FILENAME name)
    if(name MATCHES "\\.so")
        list(APPEND engine_libraries ${file})
        string(REGEX REPLACE "([.+])" "\\\\\\1" pattern "^${name}$")
        list(APPEND own ${pattern}) # two engines have two libraries of the same name, beside each of them
    endif()
endforeach()

file(GET_RUNTIME_DEPENDENCIES
     EXECUTABLES ${contents}/MacOS/Parlivo ${engines}
     MODULES ${modules} ${engine_libraries}
     RESOLVED_DEPENDENCIES_VAR libraries
     UNRESOLVED_DEPENDENCIES_VAR missing
     PRE_EXCLUDE_REGEXES ${of_the_system} ${own})
if(missing)
    message(FATAL_ERROR "These libraries are not found: ${missing}")
endif()
foreach(library ${libraries})
    cmake_path(GET library FILENAME name)
    file(REAL_PATH ${library} file)
    file(MAKE_DIRECTORY ${contents}/lib)
    file(COPY_FILE ${file} ${contents}/lib/${name})
    list(APPEND carried ${file})
endforeach()

# set_run_path(path file...): where the loader looks for the libraries of these files.
function(set_run_path path)
    foreach(file ${ARGN})
        execute_process(COMMAND patchelf --set-rpath ${path} ${file} COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endfunction()

file(GLOB copies ${contents}/lib/*)
file(CHMOD ${copies} ${modules} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set_run_path("$ORIGIN" ${copies})
set_run_path("$ORIGIN/../../lib" ${modules})
set_run_path("$ORIGIN/../lib" ${contents}/MacOS/Parlivo)
if(engine_files)
    set_run_path("$ORIGIN:$ORIGIN/../../lib" ${engine_files})
else()
    set_run_path("$ORIGIN/../lib" ${engines})
endif()

# Where Qt looks for its plug-ins (https://doc.qt.io/qt-6/qt-conf.html).
file(WRITE ${contents}/MacOS/qt.conf "[Paths]\nPrefix = ..\nPlugins = plugins\n")
list(JOIN carried "\n" carried)
file(WRITE ${LIST} "${carried}\n")
