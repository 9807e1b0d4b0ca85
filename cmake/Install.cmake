# What `cmake --install` puts in place: the bundle as a whole, and around it what a desktop looks for. Nothing in
# it names the prefix, so that all of it can be moved together.

set(bundle_home lib/parlivo/Parlivo.app/Contents)
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

install(CODE [[
    set(programs "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/bin")
    file(MAKE_DIRECTORY "${programs}")
    file(CREATE_LINK ../lib/parlivo/Parlivo.app/Contents/MacOS/Parlivo "${programs}/parlivo" SYMBOLIC)]])

configure_file(resources/desktop/${desktop_id}.metainfo.xml.in ${CMAKE_BINARY_DIR}/${desktop_id}.metainfo.xml @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/${desktop_id}.metainfo.xml DESTINATION share/metainfo)
install(FILES resources/desktop/${desktop_id}.desktop DESTINATION share/applications)
install(FILES resources/icons/${desktop_id}.svg DESTINATION share/icons/hicolor/scalable/apps)
install(DIRECTORY ${icon_theme} DESTINATION share/icons)
install(FILES docs/parlivo.1 DESTINATION share/man/man1)
install(FILES README.md docs/manual.md CHANGELOG.md DESTINATION share/doc/parlivo)
