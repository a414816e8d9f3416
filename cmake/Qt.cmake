# One source for three Qt generations. The library links against dov417_qtcore; the tool, which loads
# it, against the same generation: two Qts in one process would not know each other's texts.
#
# Qt 4: -DDOV417_QT=4 -DQT_QMAKE_EXECUTABLE=/path/to/qmake (CMake's own FindQt4 asks it).
if(DOV417_QT STREQUAL "4")
  find_package(Qt4 4.8 REQUIRED QtCore)
  set(dov417_qtcore_target Qt4::QtCore)
  if(DOV417_TOOLS)
    message(STATUS "The tool is not built: it needs Qt 5 or 6")
    set(DOV417_TOOLS OFF)
  endif()
elseif(DOV417_QT MATCHES "^[56]$")
  find_package(Qt${DOV417_QT} REQUIRED COMPONENTS Core)
  set(dov417_qtcore_target Qt${DOV417_QT}::Core)
  if(DOV417_TOOLS)
    find_package(Qt${DOV417_QT} REQUIRED COMPONENTS SerialPort Network)
    set(dov417_qt_ports Qt${DOV417_QT}::SerialPort Qt${DOV417_QT}::Network)
  endif()
else()
  message(FATAL_ERROR "DOV417_QT is \"${DOV417_QT}\": it must be 4, 5 or 6")
endif()
add_library(dov417_qtcore INTERFACE)
target_link_libraries(dov417_qtcore INTERFACE ${dov417_qtcore_target})
