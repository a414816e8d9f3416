# What session_host prints, and that it ends well: a regular expression of ctest's would pass whatever
# the exit code.
execute_process(COMMAND ${HOST} ${LIBRARY} RESULT_VARIABLE code OUTPUT_VARIABLE said ERROR_VARIABLE errors)
set(expected "R_W:100 = 0 \\(good\\).*write: taken.*R_W:100 = 1500 \\(good\\)")
if(NOT code EQUAL 0 OR NOT said MATCHES "${expected}")
  message(FATAL_ERROR "session_host ended with ${code}\n${said}${errors}")
endif()
execute_process(COMMAND ${HOST} ${LIBRARY}.not-there RESULT_VARIABLE code OUTPUT_QUIET ERROR_VARIABLE errors)
if(NOT code EQUAL 1 OR errors STREQUAL "")
  message(FATAL_ERROR "session_host without a library ended with ${code}, saying: ${errors}")
endif()
