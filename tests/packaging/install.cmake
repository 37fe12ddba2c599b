# packaging_install: `cmake --install` of the build into a fresh prefix puts every file where it
# belongs and nothing else; the installed zatgen runs from there. The other packaging tests use
# this prefix (fixture zat16_prefix).
include("${CMAKE_CURRENT_LIST_DIR}/common.cmake")

fresh_directory("${PREFIX}")
run(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}")

file(GLOB_RECURSE installed LIST_DIRECTORIES false RELATIVE "${PREFIX}" "${PREFIX}/*")
foreach(path IN LISTS ZAT16_INSTALLED_FILES)
    if(NOT path IN_LIST installed)
        list(JOIN installed "\n  " shown)
        message(FATAL_ERROR "Not installed: ${path}\nInstalled:\n  ${shown}")
    endif()
endforeach()
# Besides the list: the per-configuration part of the exported targets, and documentation.
foreach(path IN LISTS installed)
    if(NOT path IN_LIST ZAT16_INSTALLED_FILES
       AND NOT path MATCHES "^share/zat16/cmake/zat16Targets-[a-z]+\\.cmake$"
       AND NOT path MATCHES "^share/doc/")
        message(FATAL_ERROR "Installed but not expected: ${path}")
    endif()
endforeach()

foreach(program zatedit zatgen)
    run(COMMAND test -x "${PREFIX}/bin/${program}")
endforeach()
run(COMMAND "${PREFIX}/bin/zatgen" --version STDOUT version)
expect_equal("zatgen --version" "${version}" "zatgen ${VERSION}\n")
