# The relocatable folder Parlivo.app, put together in the build folder: program, resources, Info.plist, engines.

set(PARLIVO_BUNDLE ${CMAKE_BINARY_DIR}/Parlivo.app)
set(bundle_resources ${PARLIVO_BUNDLE}/Contents/Resources)

configure_file(${CMAKE_SOURCE_DIR}/resources/Info.plist.in ${PARLIVO_BUNDLE}/Contents/Info.plist @ONLY)
set_target_properties(Parlivo PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PARLIVO_BUNDLE}/Contents/MacOS)

# bundle_resource(source destination): keeps Contents/Resources/destination equal to the file.
function(bundle_resource source destination)
    set(target ${bundle_resources}/${destination})
    add_custom_command(OUTPUT ${target}
                       COMMAND ${CMAKE_COMMAND} -E copy ${source} ${target}
                       DEPENDS ${source} VERBATIM)
    set_property(GLOBAL APPEND PROPERTY PARLIVO_BUNDLED ${target})
endfunction()

foreach(folder symbols icons sounds help)
    file(GLOB files CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/${folder}/*)
    foreach(file ${files})
        cmake_path(GET file FILENAME name)
        bundle_resource(${file} ${folder}/${name})
    endforeach()
endforeach()

if(PARLIVO_ENGINES)
    foreach(engine whisper-server llama-server)
        if(NOT EXISTS ${PARLIVO_ENGINES}/${engine})
            message(FATAL_ERROR "PARLIVO_ENGINES holds no ${engine}: ${PARLIVO_ENGINES}")
        endif()
        bundle_resource(${PARLIVO_ENGINES}/${engine} ${engine})
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
