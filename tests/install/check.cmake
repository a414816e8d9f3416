function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE out RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${out}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

set(root ${CMAKE_CURRENT_BINARY_DIR}/root)
set(host ${CMAKE_CURRENT_BINARY_DIR}/host)
file(REMOVE_RECURSE ${root} ${host})

set(ENV{DESTDIR} ${root})
run(${CMAKE_COMMAND} --install ${BUILD} --component library)
run(${CMAKE_COMMAND} --install ${BUILD} --component development)
unset(ENV{DESTDIR})

file(GLOB_RECURSE installed RELATIVE ${root}${PREFIX} ${root}/*)
list(FILTER installed EXCLUDE REGEX "dov417modbusTargets-[a-z]+\\.cmake$|^share/doc/") # a build type's, a package's
list(SORT installed)
set(expected
  include/dov417modbus/intf.h
  include/dov417modbus/protocol.h
  include/dov417modbus/records.h
  ${LIBDIR}/cmake/dov417modbus/dov417modbusConfig.cmake
  ${LIBDIR}/cmake/dov417modbus/dov417modbusConfigVersion.cmake
  ${LIBDIR}/cmake/dov417modbus/dov417modbusTargets.cmake
  ${LIBDIR}/libdov417modbus.so
  ${LIBDIR}/libdov417modbus.so.${MAJOR}
  ${LIBDIR}/libdov417modbus.so.${VERSION}
  ${LIBDIR}/pkgconfig/dov417modbus.pc)
list(SORT expected)
if(NOT installed STREQUAL expected)
  message(FATAL_ERROR "installed:\n${installed}\nexpected:\n${expected}")
endif()

run(${READELF} --dynamic ${root}${PREFIX}/${LIBDIR}/libdov417modbus.so)
if(NOT out MATCHES "SONAME[^\n]*\\[libdov417modbus\\.so\\.${MAJOR}\\]")
  message(FATAL_ERROR "the library's SONAME is not libdov417modbus.so.${MAJOR}:\n${out}")
endif()
if(out MATCHES "R(UN)?PATH")
  message(FATAL_ERROR "the installed library carries a run path:\n${out}")
endif()

# A host by way of the CMake package ...
run(${CMAKE_COMMAND} -S ${SOURCE}/examples -B ${host} -G "${GENERATOR}"
  -DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE} -DDOV417_SYSROOT=${SYSROOT}
  -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=-fPIC -DQT_QMAKE_EXECUTABLE=${QMAKE}
  -Ddov417modbus_DIR=${root}${PREFIX}/${LIBDIR}/cmake/dov417modbus)
run(${CMAKE_COMMAND} --build ${host})
separate_arguments(EMULATOR UNIX_COMMAND "${EMULATOR}")
run(${EMULATOR} ${host}/panel_host ${root}${PREFIX}/${LIBDIR}/libdov417modbus.so.${MAJOR})
if(NOT out MATCHES "version ${VERSION}\n")
  message(FATAL_ERROR "the host did not see version ${VERSION}:\n${out}")
endif()

# Everything, the tool too, into another prefix than the configured one.
set(moved ${root}/moved)
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${moved})
if(TOOL)
  foreach(file bin/dov417 share/man/man1/dov417.1.gz share/man/man1/dov417-watch.1.gz
      share/man/man1/dov417-recipe-upload.1.gz share/bash-completion/completions/dov417)
    if(NOT EXISTS ${moved}/${file})
      message(FATAL_ERROR "the tool's ${file} was not installed")
    endif()
  endforeach()
  run(gzip --decompress --stdout ${moved}/share/man/man1/dov417.1.gz)
  if(NOT out MATCHES "^\\.TH [^\n]*\"dov417 ${VERSION}\"")
    message(FATAL_ERROR "the manual page does not tell the version ${VERSION}")
  endif()
  run(${READELF} --dynamic ${moved}/bin/dov417)
  if(out MATCHES "R(UN)?PATH")
    message(FATAL_ERROR "the installed tool carries a run path:\n${out}")
  endif()
endif()

if(PANEL)
  foreach(file bin/dov417-panel share/man/man1/dov417-panel.1.gz share/applications/dov417-panel.desktop
      share/icons/hicolor/scalable/apps/dov417-panel.svg share/metainfo/org.dov417.panel.metainfo.xml)
    if(NOT EXISTS ${moved}/${file})
      message(FATAL_ERROR "the panel's ${file} was not installed")
    endif()
  endforeach()
  run(gzip --decompress --stdout ${moved}/share/man/man1/dov417-panel.1.gz)
  foreach(text simulated "SYNOPSIS\ndov417.-panel .OPTION" "dov417 ${VERSION}")
    if(NOT out MATCHES "${text}")
      message(FATAL_ERROR "the panel's manual page lacks ${text}")
    endif()
  endforeach()
endif()

# ... what pkg-config says there, which knows the directories of the machine it runs on only.
if(NOT CMAKE_TOOLCHAIN_FILE AND NOT QT STREQUAL "4")
  set(ENV{PKG_CONFIG_PATH} ${moved}/${LIBDIR}/pkgconfig)
  run(pkg-config --modversion dov417modbus)
  if(NOT out STREQUAL "${VERSION}\n")
    message(FATAL_ERROR "pkg-config names version ${out}")
  endif()
  run(pkg-config --cflags --libs dov417modbus)
  if(NOT out MATCHES "^-I([^ ]*/include/dov417modbus) .*-L([^ ]*) -ldov417modbus .*-lQt${QT}Core")
    message(FATAL_ERROR "pkg-config says ${out}")
  endif()
  foreach(file ${CMAKE_MATCH_1}/intf.h ${CMAKE_MATCH_2}/libdov417modbus.so)
    cmake_path(NORMAL_PATH file)
    if(NOT EXISTS ${file} OR NOT file MATCHES "^${moved}/")
      message(FATAL_ERROR "pkg-config leads to ${file}, not into ${moved}")
    endif()
  endforeach()
endif()
