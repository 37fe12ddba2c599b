# packaging_deb: cpack builds the Debian package from the build tree. Its control fields are filled
# in, its dependencies were computed from the programs and name the Qt 6 libraries, and zatgen runs
# from the unpacked package and generates the worked example's C header byte for byte.
include("${CMAKE_CURRENT_LIST_DIR}/common.cmake")
fresh_directory("${WORK_DIR}")

run(COMMAND "${CPACK}" -G DEB --config "${BUILD_DIR}/CPackConfig.cmake" -B "${WORK_DIR}/out"
    WORKING_DIRECTORY "${BUILD_DIR}")
file(GLOB packages "${WORK_DIR}/out/*.deb")
list(LENGTH packages count)
expect_equal("number of .deb files made" "${count}" "1")
run(COMMAND dpkg --print-architecture STDOUT architecture)
string(STRIP "${architecture}" architecture)
get_filename_component(package_name "${packages}" NAME)
expect_equal("package file name" "${package_name}" "zatedit_${VERSION}_${architecture}.deb")

# The control fields.
function(field name out)
    run(COMMAND dpkg-deb -f "${packages}" "${name}" STDOUT value)
    string(STRIP "${value}" value)
    set(${out} "${value}" PARENT_SCOPE)
endfunction()
field(Package value)
expect_equal("Package" "${value}" "zatedit")
field(Version value)
expect_equal("Version" "${value}" "${VERSION}")
field(Architecture value)
expect_equal("Architecture" "${value}" "${architecture}")
field(Maintainer value)
expect_equal("Maintainer" "${value}" "zatedit developers <zatedit@localhost>")
field(Section value)
expect_equal("Section" "${value}" "devel")
field(Priority value)
expect_equal("Priority" "${value}" "optional")
field(Description value)
expect_contains("Description" "${value}" "Editor and code generator for ZAT16 tag definitions\n " "zatgen")

# Dependencies from dpkg-shlibdeps, as "name (>= version)" entries, and the platform plugins.
field(Depends depends)
string(REPLACE ", " ";" depends "${depends}")
string(REGEX REPLACE " \\([^)]*\\)" "" names "${depends}")
foreach(library libqt6core6 libqt6gui6 libqt6widgets6 libc6 libstdc++6 qt6-qpa-plugins)
    if(NOT library IN_LIST names)
        message(FATAL_ERROR "Depends does not name ${library}: ${depends}")
    endif()
endforeach()
# dpkg-shlibdeps gives the Qt libraries the lowest version whose symbols the programs use.
foreach(library libqt6core6 libqt6gui6 libqt6widgets6)
    set(entries ${depends})
    list(FILTER entries INCLUDE REGEX "^${library} \\(>= 6\\.[0-9]")
    if(NOT entries)
        message(FATAL_ERROR "Depends has no version of Qt 6 for ${library}: ${depends}")
    endif()
endforeach()

# The files, with the /usr prefix of a Debian package.
run(COMMAND dpkg-deb -c "${packages}" STDOUT contents)
foreach(path IN LISTS ZAT16_INSTALLED_FILES)
    expect_contains("package contents" "${contents}" " ./usr/${path}\n")
endforeach()

set(root "${WORK_DIR}/root")
run(COMMAND dpkg-deb -x "${packages}" "${root}")
foreach(program zatedit zatgen)
    run(COMMAND file -b "${root}/usr/bin/${program}" STDOUT kind)
    expect_contains("${program} in the package" "${kind}" "ELF" ", stripped")
endforeach()

# zatgen as the package installs it.
run(COMMAND "${root}/usr/bin/zatgen" --version STDOUT version)
expect_equal("zatgen --version" "${version}" "zatgen ${VERSION}\n")
set(data "${SOURCE_DIR}/tests/data/generators")
run(COMMAND "${root}/usr/bin/zatgen" --header "${WORK_DIR}/worked.h" --cpp-lut "${WORK_DIR}/worked_lookup.hpp"
            "${data}/worked.zatdef")
expect_same_file("${WORK_DIR}/worked.h" "${data}/worked.h")
expect_same_file("${WORK_DIR}/worked_lookup.hpp" "${data}/worked_lookup.hpp")
