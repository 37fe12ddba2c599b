# packaging_desktop: the installed desktop entry, type of definitions files and icons are what a
# Linux desktop reads: desktop-file-validate and xmllint accept them, update-mime-database makes
# the glob, root element and parent type of them, and every icon has its size.
include("${CMAKE_CURRENT_LIST_DIR}/common.cmake")
fresh_directory("${WORK_DIR}")

# The menu entry opens the file it is given and offers itself for definitions files.
set(desktop "${PREFIX}/share/applications/zatedit.desktop")
run(COMMAND desktop-file-validate "${desktop}" OUTPUT complaints)
expect_equal("desktop-file-validate output" "${complaints}" "")
file(STRINGS "${desktop}" lines)
foreach(line "[Desktop Entry]" "Type=Application" "Exec=zatedit %f" "Icon=zatedit" "Terminal=false"
             "MimeType=application/x-zat16-definitions;")
    if(NOT line IN_LIST lines)
        message(FATAL_ERROR "zatedit.desktop has no line \"${line}\"")
    endif()
endforeach()
list(FILTER lines INCLUDE REGEX "^Categories=")
expect_equal("Categories of zatedit.desktop" "${lines}" "Categories=Development;Qt;")

# The type, compiled as the desktop compiles it.
set(mime "${PREFIX}/share/mime/packages/zatedit.xml")
run(COMMAND xmllint --noout "${mime}" OUTPUT complaints)
expect_equal("xmllint output" "${complaints}" "")
file(MAKE_DIRECTORY "${WORK_DIR}/mime/packages")
file(COPY "${mime}" DESTINATION "${WORK_DIR}/mime/packages")
# (update-mime-database warns about a folder outside XDG_DATA_DIRS.)
run(COMMAND "${CMAKE_COMMAND}" -E env "XDG_DATA_DIRS=${WORK_DIR}:/usr/share" update-mime-database "${WORK_DIR}/mime"
    OUTPUT complaints)
expect_equal("update-mime-database output" "${complaints}" "")
file(READ "${WORK_DIR}/mime/globs2" globs)
expect_contains("globs2" "${globs}" "50:application/x-zat16-definitions:*.zatdef\n")
file(READ "${WORK_DIR}/mime/XMLnamespaces" namespaces)
expect_contains("XMLnamespaces" "${namespaces}" " zat16 application/x-zat16-definitions\n")
file(READ "${WORK_DIR}/mime/subclasses" subclasses)
expect_contains("subclasses" "${subclasses}" "application/x-zat16-definitions application/xml\n")
file(READ "${WORK_DIR}/mime/application/x-zat16-definitions.xml" type)
expect_contains("the compiled type" "${type}" "<comment>ZAT16 tag definitions</comment>")

# The icon theme's folder names are the sizes of the pictures in them.
foreach(size 16 32 48 64 128 256)
    run(COMMAND file -b "${PREFIX}/share/icons/hicolor/${size}x${size}/apps/zatedit.png" STDOUT kind)
    expect_contains("the ${size} pixel icon" "${kind}" "PNG image data, ${size} x ${size},")
endforeach()
