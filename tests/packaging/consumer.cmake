# packaging_consumer: tests/consumer, a project of zatgen's users, is configured against the
# installation in PREFIX with -DCMAKE_PREFIX_PATH, built with the generator and compilers of this
# build, and its programs run. Then the build rules of zat16_generate() are checked: a second build
# has nothing to do, touching the definitions file runs zatgen again (and, with Ninja, nothing
# else, since zatgen leaves unchanged outputs alone), and a changed definitions file reaches the
# programs.
include("${CMAKE_CURRENT_LIST_DIR}/common.cmake")
fresh_directory("${WORK_DIR}")

# The definitions file is a copy, so that touching and changing it leaves the examples alone.
set(definitions "${WORK_DIR}/battery-charger.zatdef")
file(COPY "${SOURCE_DIR}/examples/battery-charger.zatdef" DESTINATION "${WORK_DIR}")
set(build "${WORK_DIR}/build")
set(configure "${CMAKE_COMMAND}" -S "${SOURCE_DIR}/tests/consumer" -B "${build}" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DZAT16_DEFINITIONS=${definitions}" -DCMAKE_BUILD_TYPE=Release)
if(MAKE_PROGRAM)
    list(APPEND configure "-DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}")
endif()
if(C_COMPILER AND CXX_COMPILER)
    list(APPEND configure "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}")
endif()
run(COMMAND ${configure})

# The package and zatgen were found in the installation, not anywhere else on the machine.
file(STRINGS "${build}/CMakeCache.txt" found REGEX "^zat16_DIR:")
expect_equal("zat16_DIR" "${found}" "zat16_DIR:PATH=${PREFIX}/share/zat16/cmake")

set(ninja FALSE)
if(GENERATOR MATCHES "Ninja")
    set(ninja TRUE)
endif()
set(ran_zatgen "with zatgen")

# First build: the three zatgen rules run and the programs compile.
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_contains("first build" "${log}"
    "Generating battery_tags.h from battery-charger.zatdef with zatgen"
    "Generating battery_enums.hpp, battery_lookup.hpp from battery-charger.zatdef with zatgen"
    "Generating battery-charger.zatdef, battery_tags.lua, BatteryTags.cs from battery-charger.zatdef with zatgen")
foreach(output c/battery_tags.h cpp/battery_lookup.hpp cpp/battery_enums.hpp battery_tags.lua BatteryTags.cs
               battery-charger.zatdef)
    if(NOT EXISTS "${build}/generated/${output}")
        message(FATAL_ERROR "zat16_generate() made no ${output}")
    endif()
endforeach()
# The canonical layout of the example is the example itself.
expect_same_file("${build}/generated/battery-charger.zatdef" "${definitions}")

foreach(program check_header check_lookup)
    run(COMMAND "${build}/${program}" STDOUT out)
    expect_contains("${program}" "${out}" " checks, 0 failed")
endforeach()

# Second build, nothing changed: zatgen does not run.
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_not_contains("build with nothing changed" "${log}" "${ran_zatgen}")
if(ninja)
    expect_contains("build with nothing changed" "${log}" "ninja: no work to do.")
endif()

# The definitions file touched: zatgen runs again, three times, and with Ninja nothing is
# compiled, since the outputs kept their content and their time.
file(TOUCH "${definitions}")
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
string(REGEX MATCHALL "${ran_zatgen}" runs "${log}")
list(LENGTH runs count)
expect_equal("zatgen runs after touching the definitions file" "${count}" "3")
if(ninja)
    expect_not_contains("build after touching the definitions file" "${log}" "Building C" "Linking C")
endif()
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_not_contains("build after the rebuild" "${log}" "${ran_zatgen}")

# A changed tag code reaches both programs, whose checks now fail on it.
file(READ "${definitions}" text)
string(REPLACE "name=\"ChargeCurrent\" id=\"0x1104\"" "name=\"ChargeCurrent\" id=\"0x1107\"" changed "${text}")
if(changed STREQUAL text)
    message(FATAL_ERROR "The tag ChargeCurrent was not found in ${definitions}")
endif()
file(WRITE "${definitions}" "${changed}")
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_contains("build after a change" "${log}" "${ran_zatgen}")
run(COMMAND "${build}/check_header" STDOUT out RESULT result)
expect_equal("exit status of check_header" "${result}" "1")
expect_contains("check_header" "${out}" "FAIL: TAG_ChargeCurrent is 4359 (0x1107), expected 4356 (0x1104)")
run(COMMAND "${build}/check_lookup" STDOUT out RESULT result)
expect_equal("exit status of check_lookup" "${result}" "1")
expect_contains("check_lookup" "${out}" "FAIL: ChargeCurrent is 4359 (0x1107), expected 4356 (0x1104)")

# zat16_generate() checks the outputs it generates: a tag with both an enumeration list and a bit
# list breaks the C++ enums header, whose rule has WERROR, so the build stops with the problem.
string(REPLACE "<tag name=\"ChargeCurrent\" id=\"0x1107\" comment=\"Charge current in mA\"/>"
    "<tag name=\"ChargeCurrent\" id=\"0x1107\" comment=\"Charge current in mA\"><enums><enum name=\"Low\" id=\"0\"/></enums><bits><bit name=\"Fast\" id=\"1\"/></bits></tag>"
    both "${changed}")
if(both STREQUAL changed)
    message(FATAL_ERROR "The changed tag ChargeCurrent was not found in ${definitions}")
endif()
file(WRITE "${definitions}" "${both}")
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log RESULT result)
if(result EQUAL 0)
    message(FATAL_ERROR "A tag with both lists did not fail the build of the C++ outputs:\n${log}")
endif()
expect_contains("build with both lists on a tag" "${log}"
    "problem: Tag ChargeCurrent (0x1107): the C++ enums header will not compile: the tag has both an enumeration list and a bit list")
