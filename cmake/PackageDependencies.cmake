# Read by cpack before it makes the packages: what they depend on, as dpkg-shlibdeps reads it from the
# built binaries. For another processor it is shown the packages of the sysroot that they were linked
# in (packaging/make-sysroot).
cmake_policy(VERSION 3.25)
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

function(add_dependencies_of component binary)
  set(folder ${CPACK_TOPLEVEL_DIRECTORY}/dependencies)
  file(WRITE ${folder}/debian/control "")
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env ${CPACK_DOV417_SHLIBDEPS} -O ${binary}
    WORKING_DIRECTORY ${folder}
    OUTPUT_VARIABLE found ERROR_VARIABLE complaint RESULT_VARIABLE result)
  if(NOT result EQUAL 0 OR NOT found MATCHES "^shlibs:Depends=(.*libqt${CPACK_DOV417_QT}core.*)\n$")
    message(FATAL_ERROR "what ${binary} depends on is unknown: ${found}${complaint}")
  endif()
  set(variable CPACK_DEBIAN_${component}_PACKAGE_DEPENDS)
  list(APPEND ${variable} "${CMAKE_MATCH_1}")
  list(JOIN ${variable} ", " all)
  set(${variable} "${all}" PARENT_SCOPE)
endfunction()

add_dependencies_of(LIBRARY ${CPACK_DOV417_LIBRARY})
if("tool" IN_LIST CPACK_COMPONENTS_ALL)
  add_dependencies_of(TOOL ${CPACK_DOV417_TOOL})
endif()
if("panel" IN_LIST CPACK_COMPONENTS_ALL)
  add_dependencies_of(PANEL ${CPACK_DOV417_PANEL})
endif()
