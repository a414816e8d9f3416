# What goes where: the library (component library), what a host is compiled with (development) and
# the commissioning tool (tool). Debian's places when the prefix is /usr.
include(CMakePackageConfigHelpers)

install(TARGETS dov417modbus EXPORT dov417modbusTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
  NAMELINK_COMPONENT development)

install(FILES include/intf.h include/protocol.h include/records.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/dov417modbus COMPONENT development)

set(dov417_qt_package Qt${DOV417_QT})
if(DOV417_QT STREQUAL "4")
  set(dov417_qt_component QtCore)
  set(dov417_qt_pkgconfig QtCore)
else()
  set(dov417_qt_component Core)
  set(dov417_qt_pkgconfig Qt${DOV417_QT}Core)
endif()
set(dov417_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/dov417modbus)
configure_package_config_file(cmake/dov417modbusConfig.cmake.in dov417modbusConfig.cmake
  INSTALL_DESTINATION ${dov417_cmake_dir})
write_basic_package_version_file(dov417modbusConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/dov417modbusConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/dov417modbusConfigVersion.cmake
  DESTINATION ${dov417_cmake_dir} COMPONENT development)
install(EXPORT dov417modbusTargets NAMESPACE dov417modbus::
  DESTINATION ${dov417_cmake_dir} COMPONENT development)

configure_file(cmake/dov417modbus.pc.in dov417modbus.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dov417modbus.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET dov417)
  install(TARGETS dov417 RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  set(manual ${CMAKE_CURRENT_BINARY_DIR}/dov417.1)
  configure_file(tool/dov417.1 ${manual} @ONLY)
  add_custom_command(OUTPUT ${manual}.gz DEPENDS ${manual} VERBATIM
    COMMAND gzip --best --no-name --stdout ${manual} > ${manual}.gz)
  add_custom_target(dov417_manual ALL DEPENDS ${manual}.gz)
  install(FILES ${manual}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  install(FILES packaging/dov417.bash RENAME dov417 COMPONENT tool
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()
