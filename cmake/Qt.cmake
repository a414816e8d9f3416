# One source for three Qt generations; everything else links against dov417_qtcore.
add_library(dov417_qtcore INTERFACE)
if(DOV417_QT STREQUAL "4")
  find_package(Qt4 4.8 REQUIRED QtCore)
  target_link_libraries(dov417_qtcore INTERFACE Qt4::QtCore)
else()
  find_package(Qt${DOV417_QT} REQUIRED COMPONENTS Core)
  target_link_libraries(dov417_qtcore INTERFACE Qt${DOV417_QT}::Core)
endif()
