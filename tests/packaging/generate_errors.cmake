# packaging_generate_errors: the installed package, configured in the small project usage/. A valid
# call of zat16_generate() with every option configures and reports its outputs; each wrong call,
# and a version the package does not provide, stops the configuration with its message.
include("${CMAKE_CURRENT_LIST_DIR}/common.cmake")
fresh_directory("${WORK_DIR}")

set(index 0)
function(configure case out_result out_log)
    math(EXPR index "${index} + 1")
    set(index ${index} PARENT_SCOPE)
    set(command "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/usage" -B "${WORK_DIR}/${index}" -G "${GENERATOR}"
        "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DCASE=${case}")
    if(MAKE_PROGRAM)
        list(APPEND command "-DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}")
    endif()
    run(COMMAND ${command} OUTPUT log RESULT result)
    set(${out_result} "${result}" PARENT_SCOPE)
    set(${out_log} "${log}" PARENT_SCOPE)
endfunction()

configure("valid" result log)
expect_equal("exit status of a valid configuration" "${result}" "0")
set(b "${WORK_DIR}/1")
expect_contains("valid call" "${log}"
    "-- zatgen: ${PREFIX}/bin/zatgen\n"
    "-- outputs: ${b}/canonical.zatdef;${b}/tags.h;${b}/tags.lua;${b}/enums.hpp;${b}/lookup.hpp;${b}/Tags.cs\n"
    "-- sources: ${b}/canonical.zatdef;${b}/tags.h;${b}/tags.lua;${b}/enums.hpp;${b}/lookup.hpp;${b}/Tags.cs\n")

configure("plugin" result log)
expect_equal("exit status of a configuration with a plugin" "${result}" "0")
set(b "${WORK_DIR}/2")
expect_contains("call with a plugin" "${log}" "-- outputs: ${b}/model.json;${b}/py/tags.py\n")

foreach(row
        "no definitions|zat16_generate: DEFINITIONS <file.zatdef> is required"
        "no output|zat16_generate: no output asked for; name at least one of HEADER, LUA, CPP, CPP_LUT, CS or XML"
        "unknown argument|zat16_generate: unknown argument: JAVA Tags.java"
        "missing value|zat16_generate: no value given for HEADER"
        "same file twice|zat16_generate: WORK/gen/tags.h is named for more than one output"
        "no such target|zat16_generate: TARGET nosuch is not a target"
        "target of another directory|zat16_generate: TARGET there is defined in SOURCE/sub; call zat16_generate() in that directory"
        "version too new|compatible with requested version \"1.0\""
        "plugin without folder|zat16_generate: PLUGIN zatgen-python needs PLUGIN_OUT <dir>"
        "plugin without files|zat16_generate: PLUGIN zatgen-python needs PLUGIN_FILES, the files it makes"
        "plugin files without plugin|zat16_generate: PLUGIN_OUT, PLUGIN_FILES and PLUGIN_OPTIONS need a PLUGIN")
    string(REGEX REPLACE "\\|.*" "" case "${row}")
    string(REGEX REPLACE "^[^|]*\\|" "" expected "${row}")
    math(EXPR next "${index} + 1")
    string(REPLACE "WORK" "${WORK_DIR}/${next}" expected "${expected}")
    string(REPLACE "SOURCE" "${CMAKE_CURRENT_LIST_DIR}/usage" expected "${expected}")
    configure("${case}" result log)
    if(result EQUAL 0)
        message(FATAL_ERROR "The configuration \"${case}\" succeeded:\n${log}")
    endif()
    # CMake wraps long messages; compare with the line breaks and indents taken out.
    string(REGEX REPLACE "\n *" " " flat "${log}")
    expect_contains("configuration \"${case}\"" "${flat}" "${expected}")
endforeach()
