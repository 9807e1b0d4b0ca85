# SPDX-License-Identifier: MIT
# What `cmake --install` puts in place: the bundle as a whole, and around it what a desktop looks for. Nothing in
# it names the prefix, so that all of it can be moved together.

include(GNUInstallDirs)

set(bundle_home ${CMAKE_INSTALL_LIBDIR}/parlivo/Parlivo.app/Contents)
set(desktop_id it.parlivo.Parlivo)

install(TARGETS Parlivo RUNTIME DESTINATION ${bundle_home}/MacOS)
install(FILES ${PARLIVO_BUNDLE}/Contents/Info.plist DESTINATION ${bundle_home})
get_property(bundled GLOBAL PROPERTY PARLIVO_BUNDLED)
foreach(file ${bundled})
    cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${PARLIVO_BUNDLE}/Contents OUTPUT_VARIABLE place)
    cmake_path(GET place PARENT_PATH folder)
    if(file MATCHES "-server$")
        install(PROGRAMS ${file} DESTINATION ${bundle_home}/${folder})
    else()
        install(FILES ${file} DESTINATION ${bundle_home}/${folder})
    endif()
endforeach()

# The command is a link into the bundle, relative so that a moved prefix keeps it.
cmake_path(SET command_folder NORMALIZE /${CMAKE_INSTALL_BINDIR})
cmake_path(SET program NORMALIZE /${bundle_home}/MacOS/Parlivo)
cmake_path(RELATIVE_PATH program BASE_DIRECTORY ${command_folder})
install(CODE "
    set(commands \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    file(MAKE_DIRECTORY \"\${commands}\")
    file(CREATE_LINK ${program} \"\${commands}/parlivo\" SYMBOLIC)")

set(metainfo ${PROJECT_BINARY_DIR}/${desktop_id}.metainfo.xml)
configure_file(resources/desktop/${desktop_id}.metainfo.xml.in ${metainfo} @ONLY)
install(FILES ${metainfo} DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES resources/desktop/${desktop_id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES resources/icons/${desktop_id}.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(DIRECTORY ${icon_theme} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)
install(FILES docs/parlivo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/parlivo.it.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/it/man1 RENAME parlivo.1)

# The documents lie in one folder there, their pictures below it.
set(documents ${CMAKE_INSTALL_DATADIR}/doc/parlivo)
foreach(document README.md docs/manual.md docs/manuale.md)
    cmake_path(GET document FILENAME name)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${document})
    file(READ ${document} text)
    string(REPLACE "](../resources/help/pictures/" "](pictures/" text "${text}")
    string(REPLACE "](docs/" "](" text "${text}")
    file(WRITE ${PROJECT_BINARY_DIR}/documents/${name} "${text}")
    install(FILES ${PROJECT_BINARY_DIR}/documents/${name} DESTINATION ${documents})
endforeach()
install(FILES docs/third-party.md CHANGELOG.md DESTINATION ${documents})
install(DIRECTORY resources/help/pictures DESTINATION ${documents})
install(FILES docs/pictures/dictation.gif DESTINATION ${documents}/pictures)
