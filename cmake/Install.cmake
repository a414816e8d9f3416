# What goes where: the library (component library), what a host is compiled with (development), the
# commissioning tool (tool) and the graphical panel (panel). Debian's places when the prefix is /usr.
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

# From the file's own place to the prefix, which --prefix may still change when it is installed.
file(RELATIVE_PATH dov417_up ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/dov417modbus.pc.in dov417modbus.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/dov417modbus.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET dov417)
  install(TARGETS dov417 RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  # Made here and not by the build, so that whatever was built can be installed. Its footer tells the
  # version.
  set(manual ${CMAKE_CURRENT_BINARY_DIR}/dov417.1)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS tool/dov417.1)
  file(READ tool/dov417.1 text)
  string(REPLACE "\"dov417\" \"User Commands\"" "\"dov417 ${PROJECT_VERSION}\" \"User Commands\""
    text "${text}")
  file(WRITE ${manual} "${text}")
  execute_process(COMMAND gzip --best --no-name --force ${manual} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${manual}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  install(FILES docs/project-file.md docs/json-output.md docs/json-output.schema.json
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)
  # Those of its commands, which the tool writes when it is built.
  install(DIRECTORY ${PROJECT_BINARY_DIR}/tool/manual/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT tool)
  install(FILES packaging/dov417.bash RENAME dov417 COMPONENT tool
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()

if(TARGET dov417-panel)
  install(TARGETS dov417-panel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT panel)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/panel/manual/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT panel)
  # How a desktop finds it.
  install(FILES packaging/panel/dov417-panel.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT panel)
  install(FILES packaging/panel/dov417-panel.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT panel)
  file(STRINGS CHANGELOG.md release REGEX "^## \\[[0-9]" LIMIT_COUNT 1)
  string(REGEX MATCH "[-0-9]+$" release_day "${release}")
  configure_file(packaging/panel/org.dov417.panel.metainfo.xml.in org.dov417.panel.metainfo.xml @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/org.dov417.panel.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT panel)
  install(FILES docs/panel.md
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/dov417-panel COMPONENT panel)
  install(DIRECTORY docs/pictures DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/dov417-panel
    COMPONENT panel FILES_MATCHING PATTERN "*.png")
endif()
