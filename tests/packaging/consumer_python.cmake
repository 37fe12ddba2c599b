# packaging_consumer_python: tests/consumer with ZAT16_PYTHON, configured against the installation
# in PREFIX: zat16_generate() runs the installed plugin zatgen-python by name, python3 imports the
# module and checks its values. A second build has nothing to do; touching the definitions file
# runs zatgen again and leaves the unchanged module alone; a changed tag code reaches the module.
include("${CMAKE_CURRENT_LIST_DIR}/common.cmake")
fresh_directory("${WORK_DIR}")

set(definitions "${WORK_DIR}/battery-charger.zatdef")
file(COPY "${SOURCE_DIR}/examples/battery-charger.zatdef" DESTINATION "${WORK_DIR}")
set(build "${WORK_DIR}/build")
set(configure "${CMAKE_COMMAND}" -S "${SOURCE_DIR}/tests/consumer" -B "${build}" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DZAT16_DEFINITIONS=${definitions}" -DZAT16_PYTHON=ON -DCMAKE_BUILD_TYPE=Release)
if(MAKE_PROGRAM)
    list(APPEND configure "-DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}")
endif()
if(C_COMPILER AND CXX_COMPILER)
    list(APPEND configure "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}")
endif()
run(COMMAND ${configure})

set(ninja FALSE)
if(GENERATOR MATCHES "Ninja")
    set(ninja TRUE)
endif()
set(module "${build}/generated/python/battery_tags.py")
set(check python3 "${SOURCE_DIR}/tests/consumer/check_python.py" "${build}/generated/python")

run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_contains("first build" "${log}" "Generating battery_tags.py from battery-charger.zatdef with zatgen")
if(NOT EXISTS "${module}")
    message(FATAL_ERROR "zat16_generate() made no ${module}")
endif()
run(COMMAND ${check} STDOUT out)
expect_equal("check_python.py" "${out}" "16 checks, 0 failed\n")

run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_not_contains("build with nothing changed" "${log}" "battery_tags.py from")
if(ninja)
    expect_contains("build with nothing changed" "${log}" "ninja: no work to do.")
endif()

# Touched: the plugin runs again, and the module, whose content stays, keeps its time.
file(TIMESTAMP "${module}" before "%s")
execute_process(COMMAND sleep 1.1)
file(TOUCH "${definitions}")
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_contains("build after touching the definitions file" "${log}" "battery_tags.py from")
file(TIMESTAMP "${module}" after "%s")
if(ninja)
    expect_equal("time of the unchanged module" "${after}" "${before}")
endif()

file(READ "${definitions}" text)
string(REPLACE "name=\"ChargeCurrent\" id=\"0x1104\"" "name=\"ChargeCurrent\" id=\"0x1107\"" changed "${text}")
file(WRITE "${definitions}" "${changed}")
run(COMMAND "${CMAKE_COMMAND}" --build "${build}" OUTPUT log)
expect_contains("build after a change" "${log}" "battery_tags.py from")
run(COMMAND ${check} STDOUT out RESULT result)
expect_equal("exit status of check_python.py" "${result}" "1")
expect_contains("check_python.py" "${out}" "FAIL: Tag.ChargeCurrent is 4359 (0x1107), expected 4356 (0x1104)")
