cmake_minimum_required(VERSION 3.21)

# Helpers of the packaging test scripts (run with cmake -P). A failed check stops the script with
# FATAL_ERROR, which fails the test.

# run(COMMAND <command>... [WORKING_DIRECTORY <dir>] [OUTPUT <var>] [STDOUT <var>] [RESULT <var>])
# Runs the command. Without RESULT a non-zero exit status fails the test, showing the output.
# OUTPUT receives standard output and standard error together, STDOUT standard output alone.
function(run)
    cmake_parse_arguments(ARG "" "WORKING_DIRECTORY;OUTPUT;STDOUT;RESULT" "COMMAND" ${ARGN})
    if(NOT ARG_WORKING_DIRECTORY)
        set(ARG_WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
    execute_process(COMMAND ${ARG_COMMAND}
        WORKING_DIRECTORY "${ARG_WORKING_DIRECTORY}"
        RESULT_VARIABLE result
        OUTPUT_VARIABLE out
        ERROR_VARIABLE err)
    list(JOIN ARG_COMMAND " " shown)
    message(STATUS "$ ${shown}  -> ${result}")
    if(ARG_RESULT)
        set(${ARG_RESULT} "${result}" PARENT_SCOPE)
    elseif(NOT result EQUAL 0)
        message(FATAL_ERROR "Command failed with ${result}: ${shown}\n${out}${err}")
    endif()
    if(ARG_OUTPUT)
        set(${ARG_OUTPUT} "${out}${err}" PARENT_SCOPE)
    endif()
    if(ARG_STDOUT)
        set(${ARG_STDOUT} "${out}" PARENT_SCOPE)
    endif()
endfunction()

# expect_equal(<what> <actual> <expected>)
function(expect_equal what actual expected)
    if(NOT "${actual}" STREQUAL "${expected}")
        message(FATAL_ERROR "${what}:\n  actual:   \"${actual}\"\n  expected: \"${expected}\"")
    endif()
endfunction()

# expect_contains(<what> <text> <part>...): each part occurs in the text as it stands.
function(expect_contains what text)
    foreach(part IN LISTS ARGN)
        string(FIND "${text}" "${part}" at)
        if(at EQUAL -1)
            message(FATAL_ERROR "${what}: \"${part}\" not found in:\n${text}")
        endif()
    endforeach()
endfunction()

# expect_not_contains(<what> <text> <part>...)
function(expect_not_contains what text)
    foreach(part IN LISTS ARGN)
        string(FIND "${text}" "${part}" at)
        if(NOT at EQUAL -1)
            message(FATAL_ERROR "${what}: \"${part}\" found in:\n${text}")
        endif()
    endforeach()
endfunction()

# expect_same_file(<actual> <expected>): byte for byte, with a diff on a mismatch.
function(expect_same_file actual expected)
    execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${actual}" "${expected}" RESULT_VARIABLE differ)
    if(NOT differ EQUAL 0)
        execute_process(COMMAND diff -u "${expected}" "${actual}" OUTPUT_VARIABLE diff ERROR_VARIABLE diff)
        message(FATAL_ERROR "${actual} differs from ${expected}:\n${diff}")
    endif()
endfunction()

# fresh_directory(<dir>): an empty directory, whatever was there before.
function(fresh_directory dir)
    file(REMOVE_RECURSE "${dir}")
    file(MAKE_DIRECTORY "${dir}")
endfunction()

# What `cmake --install` puts under the prefix (share/doc/ may hold more, the user's guide).
set(ZAT16_INSTALLED_FILES
    bin/zatedit
    bin/zatgen
    bin/zatgen-python
    bin/zatgen-doc
    share/applications/zatedit.desktop
    share/mime/packages/zatedit.xml
    share/icons/hicolor/16x16/apps/zatedit.png
    share/icons/hicolor/32x32/apps/zatedit.png
    share/icons/hicolor/48x48/apps/zatedit.png
    share/icons/hicolor/64x64/apps/zatedit.png
    share/icons/hicolor/128x128/apps/zatedit.png
    share/icons/hicolor/256x256/apps/zatedit.png
    share/man/man1/zatedit.1.gz
    share/man/man1/zatgen.1.gz
    share/zat16/cmake/zat16Config.cmake
    share/zat16/cmake/zat16ConfigVersion.cmake
    share/zat16/cmake/zat16Targets.cmake
)
