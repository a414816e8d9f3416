# Compares what hosts rely on by bytes with what is recorded, or records it anew:
#
#   cmake -DPRINT_ABI=... -DLIBRARY=... -DNM=... -DRECORDED=FILE [-DRECORD=ON] -P compare.cmake
#
# PRINT_ABI is the program (with its emulator) that prints signatures and layouts.
function(run OUT)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${err}")
  endif()
  set(${OUT} "${out}" PARENT_SCOPE)
endfunction()

run(symbols ${NM} --dynamic --defined-only --format=posix ${LIBRARY})
string(REGEX MATCHALL "[^\n]+" symbols "${symbols}")
set(exported "")
foreach(symbol IN LISTS symbols)
  string(REGEX REPLACE "^([^ ]+) ([A-Za-z]) .*" "\\2 \\1" symbol "${symbol}")
  string(APPEND exported "symbol ${symbol}\n")
  if(symbol MATCHES "^u ")
    message(FATAL_ERROR "${symbol} is a unique symbol: it keeps the library in memory after "
      "dlclose. Compile what defines it with -fno-gnu-unique, or hide it.")
  endif()
endforeach()

separate_arguments(PRINT_ABI UNIX_COMMAND "${PRINT_ABI}")
run(layouts ${PRINT_ABI})
set(now "${exported}${layouts}")

if(RECORD)
  file(WRITE ${RECORDED} "${now}")
  message("recorded in ${RECORDED}")
  return()
endif()

if(NOT EXISTS ${RECORDED})
  message(FATAL_ERROR "Nothing is recorded for this platform: build the target record_abi and "
    "commit ${RECORDED}.")
endif()
file(READ ${RECORDED} recorded)
if(NOT now STREQUAL recorded)
  get_filename_component(name ${RECORDED} NAME)
  file(WRITE now-${name} "${now}")
  execute_process(COMMAND diff -U 1 ${RECORDED} now-${name} OUTPUT_VARIABLE difference)
  message(FATAL_ERROR "${difference}\n"
    "The exported symbols or the records are not what panels in the field were built against. "
    "Undo the change; if it has to be, raise the major version in project() of CMakeLists.txt (the "
    "library gets a new SONAME), describe the change in CHANGELOG.md, then build the target "
    "record_abi in every build that fails here and commit what it writes to tests/abi/.")
endif()
