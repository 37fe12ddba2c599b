# Assembles the seed folders of the fuzz targets (run by the fuzz_seeds target with cmake -P).
#   SOURCE  the project's source folder
#   OUT     the folder that receives one seed folder per target
# The definitions files of examples/ and tests/data/ seed the XML targets, a few written-out
# numbers seed fuzz_numbers, and every target also starts from its own regression inputs.
# fuzz_paste's item copies are written by fuzz_pasteseeds, not here.

set(xml_targets fuzz_load fuzz_roundtrip fuzz_generators)

file(GLOB_RECURSE files
    "${SOURCE}/examples/*.zatdef"
    "${SOURCE}/tests/data/*.zatdef"
    "${SOURCE}/tests/data/*.xml")
list(FILTER files EXCLUDE REGEX "/fuzz-regressions/")

foreach(target ${xml_targets})
    file(MAKE_DIRECTORY "${OUT}/${target}")
    foreach(path ${files})
        file(RELATIVE_PATH name "${SOURCE}" "${path}")
        string(REPLACE "/" "_" name "${name}")
        configure_file("${path}" "${OUT}/${target}/${name}" COPYONLY)
    endforeach()
endforeach()

# Written out one per file; the empty text is left to the fuzzer.
set(numbers
    "0" "1" "-1" "+1" "-" "+" "010" "0x1F" "0X1f" "0xabcdef" "0xABCDEF" "0b101" "0B1" "0b" "0x"
    " 1" "1 " "--1" "+-1" "0o17" "12a" "4294967295" "4294967296" "-4294967296"
    "18446744073709551615" "18446744073709551616" "-9223372036854775808"
    "0xFFFFFFFFFFFFFFFF" "0x10000000000000000" "0b1111111111111111111111111111111111111111111111111111111111111111"
    "-0x8000" "+0b11" "0xg" "0b2" "00x1" "zz")
file(MAKE_DIRECTORY "${OUT}/fuzz_numbers")
set(i 0)
foreach(number ${numbers})
    file(WRITE "${OUT}/fuzz_numbers/number-${i}" "${number}")
    math(EXPR i "${i} + 1")
endforeach()

foreach(target ${xml_targets} fuzz_numbers fuzz_paste)
    file(MAKE_DIRECTORY "${OUT}/${target}")
    file(GLOB regressions "${SOURCE}/tests/data/fuzz-regressions/${target}/*")
    foreach(path ${regressions})
        get_filename_component(name "${path}" NAME)
        configure_file("${path}" "${OUT}/${target}/regression-${name}" COPYONLY)
    endforeach()
endforeach()
