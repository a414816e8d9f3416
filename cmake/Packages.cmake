# Debian packages, made by cpack in a build folder that was configured for the prefix /usr:
# libdov417modbus2, libdov417modbus-dev and, where they are built, dov417 and dov417-panel.
set(library_package libdov417modbus${PROJECT_VERSION_MAJOR})
set(development_package libdov417modbus-dev)
set(tool_package dov417)
set(panel_package dov417-panel)
set(qt_development_package qtbase5-dev)
if(DOV417_QT STREQUAL "6")
  set(qt_development_package qt6-base-dev)
endif()
if(DOV417_QT STREQUAL "4")
  message(FATAL_ERROR "No Debian packages with Qt 4: Debian has no package of it to depend on")
endif()

# The newest entry of the changelog is this version: its date is the package's.
file(STRINGS CHANGELOG.md entry REGEX "^## \\[[0-9]" LIMIT_COUNT 1)
if(NOT entry MATCHES "^## \\[${PROJECT_VERSION}\\] - ([-0-9]+)$")
  message(FATAL_ERROR "CHANGELOG.md's newest entry is \"${entry}\", but project() in CMakeLists.txt "
    "says version ${PROJECT_VERSION}")
endif()
execute_process(COMMAND date --utc --rfc-email --date=${CMAKE_MATCH_1}
  OUTPUT_VARIABLE release_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "dov417modbus maintainers <maintainers@users.noreply.c-seed-851b7a89.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # the first line of each description below

# What library and tool depend on is read from them when the packages are made.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageDependencies.cmake)
set(CPACK_DOV417_QT ${DOV417_QT})
set(CPACK_DOV417_LIBRARY ${PROJECT_BINARY_DIR}/libdov417modbus.so)
set(CPACK_DOV417_TOOL ${PROJECT_BINARY_DIR}/tool/dov417)
set(CPACK_DOV417_PANEL ${PROJECT_BINARY_DIR}/panel/dov417-panel)
find_program(DOV417_SHLIBDEPS dpkg-shlibdeps REQUIRED)
set(CPACK_DOV417_SHLIBDEPS ${DOV417_SHLIBDEPS})
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${DOV417_ARM_ARCH})
  set(CPACK_DOV417_SHLIBDEPS DEB_HOST_ARCH=${DOV417_ARM_ARCH} ${DOV417_SHLIBDEPS}
    --admindir=${DOV417_SYSROOT}/dpkg
    -l${DOV417_SYSROOT}/lib/${DOV417_ARM_TRIPLET} -l${DOV417_SYSROOT}/usr/lib/${DOV417_ARM_TRIPLET})
endif()

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Modbus RTU master driver for operator panels
A panel's runtime or editor loads this library and asks it what to send to a
programmable controller on a serial line; it plans the reads, checks the
replies, keeps the values and announces their changes.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${library_package} (= ${PROJECT_VERSION}), ${qt_development_package}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Modbus RTU master driver for operator panels - headers
What a panel's runtime is compiled with to load the driver: headers, a CMake
package and a pkg-config file.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${tool_package})
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION comm)
set(CPACK_COMPONENT_TOOL_DESCRIPTION "commissioning tool of the dov417modbus panel driver
Runs the panel's driver on a real serial line or against a simulated
controller: plans, watches, reads and writes addresses, transfers recipes and
explains recorded lines.")

set(CPACK_DEBIAN_PANEL_PACKAGE_NAME ${panel_package})
set(CPACK_DEBIAN_PANEL_PACKAGE_SECTION comm)
set(CPACK_COMPONENT_PANEL_DESCRIPTION "graphical panel of the dov417modbus driver
Shows a controller on a serial line in a window: values with their state,
lamps, every frame in words; writes where it was unlocked, and saves projects.
A simulated controller is there for those who have none.")

# What dpkg has to know of a shared library: its symbols, who provides it, and that ldconfig runs.
set(control_folder ${PROJECT_BINARY_DIR}/packaging/control)
set(soname libdov417modbus.so.${PROJECT_VERSION_MAJOR})
file(STRINGS cmake/exports.map exported REGEX "^ +[A-Za-z_]+;$")
list(TRANSFORM exported REPLACE "^ +([A-Za-z_]+);$" " \\1@Base ${PROJECT_VERSION}")
list(SORT exported)
list(JOIN exported "\n" exported)
file(WRITE ${control_folder}/symbols "${soname} ${library_package} #MINVER#
* Build-Depends-Package: ${development_package}
${exported}
")
file(WRITE ${control_folder}/shlibs "libdov417modbus ${PROJECT_VERSION_MAJOR} \
${library_package} (>= ${PROJECT_VERSION})\n")
file(WRITE ${control_folder}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${control_folder}/symbols ${control_folder}/shlibs ${control_folder}/triggers)

set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PANEL_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")

set(CPACK_COMPONENTS_ALL library development)
if(TARGET dov417)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
if(TARGET dov417-panel)
  list(APPEND CPACK_COMPONENTS_ALL panel)
endif()

# Each package brings its changelog and copyright.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(name ${${component}_package})
  set(folder ${PROJECT_BINARY_DIR}/packaging/${name})
  file(WRITE ${folder}/changelog "\
${name} (${PROJECT_VERSION}) unstable; urgency=medium

  * Version ${PROJECT_VERSION}: see CHANGELOG.md of the sources.

 -- ${CPACK_PACKAGE_CONTACT}  ${release_date}
")
  execute_process(COMMAND gzip --best --no-name --force ${folder}/changelog
    COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${folder}/changelog.gz packaging/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endforeach()

include(CPack)
