# Installation and packaging, included from the top-level CMakeLists.txt before the sources so that
# the GNUInstallDirs destinations are known to every install() rule.
#
#   cmake --install <build> [--prefix <dir>]   installs the programs, the desktop integration, the
#                                              man pages and the CMake package of zatgen
#   cpack -G DEB (in the build tree)           builds the Debian package
#
# The programs themselves are installed where they are built (src/app, src/cli); zatgen joins the
# export set zat16Targets there, which becomes the imported target zat16::zatgen of the package.
# Without the editor (ZAT16_EDITOR OFF) only zatgen, its plugins, its man page and the CMake package
# are installed. The plugins are installed where they are kept (plugins/).

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(_zat16_packaging "${PROJECT_SOURCE_DIR}/packaging")

# Desktop integration: the menu entry, the type of definitions files, the icon in every size drawn.
if(ZAT16_EDITOR)
    install(FILES "${_zat16_packaging}/zatedit.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
    install(FILES "${_zat16_packaging}/zatedit-mime.xml"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages"
        RENAME zatedit.xml)
    foreach(_size 16 32 48 64 128 256)
        install(FILES "${PROJECT_SOURCE_DIR}/resources/hicolor/${_size}x${_size}/apps/zatedit.png"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/${_size}x${_size}/apps")
    endforeach()
endif()

# Man pages, compressed as Debian installs them (gzip -n: no name or time stamp, so that the same
# page always gives the same bytes).
find_program(ZAT16_GZIP gzip)
set(_zat16_pages zatgen.1)
if(ZAT16_EDITOR)
    list(PREPEND _zat16_pages zatedit.1)
endif()
foreach(_page IN LISTS _zat16_pages)
    if(ZAT16_GZIP)
        add_custom_command(OUTPUT "${PROJECT_BINARY_DIR}/man/${_page}.gz"
            COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/man"
            COMMAND "${ZAT16_GZIP}" -9 -n -c "${_zat16_packaging}/${_page}" > "${PROJECT_BINARY_DIR}/man/${_page}.gz"
            DEPENDS "${_zat16_packaging}/${_page}"
            COMMENT "Compressing the man page ${_page}"
            VERBATIM)
        list(APPEND _zat16_man_pages "${PROJECT_BINARY_DIR}/man/${_page}.gz")
    else()
        list(APPEND _zat16_man_pages "${_zat16_packaging}/${_page}")
    endif()
endforeach()
add_custom_target(zat16_man_pages ALL DEPENDS ${_zat16_man_pages})
install(FILES ${_zat16_man_pages} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

# The CMake package: find_package(zat16) gives zat16::zatgen and zat16_generate(). It holds no
# library, so it is architecture-independent and lives under share/.
set(ZAT16_CMAKE_DIR "${CMAKE_INSTALL_DATADIR}/zat16/cmake")
install(EXPORT zat16Targets
    NAMESPACE zat16::
    FILE zat16Targets.cmake
    DESTINATION "${ZAT16_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cmake/zat16ConfigVersion.cmake"
    VERSION "${PROJECT_VERSION}"
    COMPATIBILITY SameMajorVersion
    ARCH_INDEPENDENT)
install(FILES "${PROJECT_BINARY_DIR}/cmake/zat16Config.cmake"
    "${PROJECT_BINARY_DIR}/cmake/zat16ConfigVersion.cmake"
    DESTINATION "${ZAT16_CMAKE_DIR}")

# The Debian package: one binary package "zatedit" holding everything above. Its library
# dependencies are computed by dpkg-shlibdeps from the installed programs; the Qt platform plugins
# are loaded at run time, so no linker sees them and they are named here.
set(CPACK_PACKAGE_NAME zatedit)
set(CPACK_PACKAGE_VENDOR "zatedit developers")
set(CPACK_PACKAGE_CONTACT "zatedit developers <zatedit@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
# The extended description of the package, in lines of the width that dpkg shows.
string(CONCAT CPACK_PACKAGE_DESCRIPTION
    "zatedit edits the tag definitions of the ZAT16 device protocol (.zatdef\n"
    "files) as a tree of tags, enumeration values and bits, marks names and\n"
    "codes that collide, and saves the file in a stable, hand-readable layout\n"
    "with one backup generation.\n"
    "\n"
    "zatgen is its headless generator: it writes the C header, the C++\n"
    "enumerations and lookup tables, the C# enumerations and the Lua tables\n"
    "of a definitions file, and runs generator plugins for other outputs;\n"
    "zatgen-python (a Python module) and zatgen-doc (Markdown and HTML\n"
    "documentation) come with it. The CMake package find_package(zat16)\n"
    "runs it during a build through the function zat16_generate().")
set(CPACK_PACKAGE_INSTALL_DIRECTORY zatedit)
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(ZAT16_EDITOR)
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
endif()
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cmake")
# The plugins that come with zatgen are Python 3 scripts; zatgen itself does not need it.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "python3")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
