# zat16Config.cmake: the CMake package of zatgen, the generator of C, C++, C# and Lua source from
# ZAT16 tag definitions files (.zatdef). It is installed with zatedit in <prefix>/share/zat16/cmake.
#
#   find_package(zat16 [0.1] [REQUIRED])
#
# gives
#
#   zat16::zatgen      an imported executable target: the installed zatgen
#   zat16_generate()   build rules that run zatgen on a definitions file:
#
#   zat16_generate(DEFINITIONS <file.zatdef>
#                  [HEADER <file>] [LUA <file>] [CPP <file>] [CPP_LUT <file>] [CS <file>] [XML <file>]
#                  [TARGET <target>]
#                  [OUT_VAR <variable>]
#                  [WERROR])
#
#   DEFINITIONS  The definitions file. A relative path is taken from the current source directory.
#   HEADER       The C header of #define macros (zatgen --header).
#   LUA          The Lua lookup tables under the global table zat16 (zatgen --lua).
#   CPP          The C++ header of enumerations (zatgen --cpp).
#   CPP_LUT      The C++ header of name lookup tables (zatgen --cpp-lut). It uses the record types
#                NameLookupTable and TagLookupTable without defining them; the code that includes
#                it defines them first, e.g.
#                  struct NameLookupTable { const char *name; long long value; };
#                  struct TagLookupTable { unsigned int code; const NameLookupTable *table; };
#                (enumeration values may be negative, so the value is signed).
#   CS           The C# enumerations (zatgen --cs).
#   XML          The definitions themselves, in the canonical layout that zatedit saves (zatgen --xml).
#                Each of these six names one output file; at least one is required. A relative path
#                is taken from the current binary directory; missing directories are created.
#   TARGET       An existing target defined in the current directory. The outputs become its
#                sources, so that it is built after them. For an executable or a library their
#                directories are also added to its include path (PRIVATE), so that its code can
#                say #include "name.h"; a custom target only gets the sources.
#   OUT_VAR      Sets <variable> in the caller's scope to the list of the outputs' absolute paths,
#                e.g. for add_custom_target(<name> DEPENDS ${<variable>}) when several targets use
#                the same outputs.
#   WERROR       A warning about the definitions file fails the build (zatgen --werror). Without
#                it, warnings are printed and the outputs are written all the same.
#
# One call adds one custom command (add_custom_command(OUTPUT ...)) that runs zatgen once for all
# the outputs it names. The command depends on the definitions file and on the zatgen executable
# and on nothing else, so a build runs it again only when one of these two has changed. zatgen
# does not rewrite an output whose content would stay the same; with Ninja, which checks the
# outputs of a custom command again after running it, nothing that includes such an output is
# rebuilt. Other generators compare only time stamps, so there the outputs are touched after
# zatgen has run, otherwise the command would run again on every build.
#
# Example:
#
#   find_package(zat16 0.1 REQUIRED)
#   add_executable(charger main.c)
#   zat16_generate(DEFINITIONS charger.zatdef HEADER zat16/charger_tags.h TARGET charger)
#
# and main.c says #include "charger_tags.h".

cmake_policy(PUSH)
cmake_policy(VERSION 3.16...3.25)

if(CMAKE_VERSION VERSION_LESS 3.16)
    set(${CMAKE_FIND_PACKAGE_NAME}_FOUND FALSE)
    set(${CMAKE_FIND_PACKAGE_NAME}_NOT_FOUND_MESSAGE "zat16 needs CMake 3.16 or later")
    cmake_policy(POP)
    return()
endif()

include("${CMAKE_CURRENT_LIST_DIR}/zat16Targets.cmake")

function(zat16_generate)
    # Output keywords and the zatgen option each one stands for, in zatgen's own order.
    set(_kinds XML HEADER LUA CPP CPP_LUT CS)
    cmake_parse_arguments(PARSE_ARGV 0 ARG "WERROR" "DEFINITIONS;TARGET;OUT_VAR;${_kinds}" "")
    if(ARG_UNPARSED_ARGUMENTS)
        list(JOIN ARG_UNPARSED_ARGUMENTS " " _unknown)
        message(FATAL_ERROR "zat16_generate: unknown argument: ${_unknown}")
    endif()
    if(ARG_KEYWORDS_MISSING_VALUES)
        list(JOIN ARG_KEYWORDS_MISSING_VALUES " " _missing)
        message(FATAL_ERROR "zat16_generate: no value given for ${_missing}")
    endif()
    if("${ARG_DEFINITIONS}" STREQUAL "")
        message(FATAL_ERROR "zat16_generate: DEFINITIONS <file.zatdef> is required")
    endif()
    get_filename_component(_definitions "${ARG_DEFINITIONS}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")

    set(_arguments "")
    set(_outputs "")
    set(_directories "")
    set(_names "")
    foreach(_kind IN LISTS _kinds)
        if("${ARG_${_kind}}" STREQUAL "")
            continue()
        endif()
        get_filename_component(_output "${ARG_${_kind}}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
        if(_output IN_LIST _outputs)
            message(FATAL_ERROR "zat16_generate: ${_output} is named for more than one output")
        endif()
        string(TOLOWER "${_kind}" _option)
        string(REPLACE "_" "-" _option "${_option}")
        list(APPEND _arguments "--${_option}" "${_output}")
        list(APPEND _outputs "${_output}")
        get_filename_component(_directory "${_output}" DIRECTORY)
        list(APPEND _directories "${_directory}")
        get_filename_component(_name "${_output}" NAME)
        list(APPEND _names "${_name}")
    endforeach()
    if(NOT _outputs)
        message(FATAL_ERROR "zat16_generate: no output asked for; name at least one of HEADER, LUA, CPP, "
                            "CPP_LUT, CS or XML")
    endif()
    list(REMOVE_DUPLICATES _directories)

    if(NOT "${ARG_TARGET}" STREQUAL "")
        if(NOT TARGET "${ARG_TARGET}")
            message(FATAL_ERROR "zat16_generate: TARGET ${ARG_TARGET} is not a target")
        endif()
        # A custom command's outputs are known only to the targets of its own directory.
        get_target_property(_target_directory "${ARG_TARGET}" SOURCE_DIR)
        if(NOT _target_directory STREQUAL CMAKE_CURRENT_SOURCE_DIR)
            message(FATAL_ERROR "zat16_generate: TARGET ${ARG_TARGET} is defined in ${_target_directory}; "
                                "call zat16_generate() in that directory")
        endif()
    endif()

    set(_werror "")
    if(ARG_WERROR)
        set(_werror --werror)
    endif()
    set(_touch "")
    if(NOT CMAKE_GENERATOR MATCHES "Ninja")
        set(_touch COMMAND "${CMAKE_COMMAND}" -E touch_nocreate ${_outputs})
    endif()
    get_filename_component(_definitions_name "${_definitions}" NAME)
    list(JOIN _names ", " _names)

    add_custom_command(OUTPUT ${_outputs}
        COMMAND "${CMAKE_COMMAND}" -E make_directory ${_directories}
        COMMAND zat16::zatgen ${_werror} ${_arguments} "${_definitions}"
        ${_touch}
        DEPENDS "${_definitions}" "$<TARGET_FILE:zat16::zatgen>"
        WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}"
        COMMENT "Generating ${_names} from ${_definitions_name} with zatgen"
        VERBATIM)

    if(NOT "${ARG_TARGET}" STREQUAL "")
        target_sources("${ARG_TARGET}" PRIVATE ${_outputs})
        get_target_property(_type "${ARG_TARGET}" TYPE)
        if(NOT _type STREQUAL "UTILITY")
            target_include_directories("${ARG_TARGET}" PRIVATE ${_directories})
        endif()
    endif()
    if(NOT "${ARG_OUT_VAR}" STREQUAL "")
        set(${ARG_OUT_VAR} "${_outputs}" PARENT_SCOPE)
    endif()
endfunction()

cmake_policy(POP)
