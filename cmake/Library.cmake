# The driver: the protocol, which can be used alone, and the service around it. Their objects are
# linked into the shared library that panels load and into the static one through which unit tests
# reach the inner functions.
add_library(dov417modbus_protocol OBJECT
  protocol/register_table.cpp
  protocol/address_text.cpp
  protocol/crc.cpp
  protocol/frame_building.cpp
  protocol/reply_check.cpp)
add_library(dov417modbus_service OBJECT
  service/driver_state.cpp
  service/debug_line.cpp
  service/driver_lock.cpp
  service/identity.cpp
  service/plain_text.cpp
  service/uncalled_functions.cpp
  service/editor/address_check.cpp
  service/editor/multiple_copy.cpp
  service/planning/weight_order.cpp
  service/planning/request_queue.cpp
  service/planning/address_merging.cpp
  service/planning/pieces.cpp
  service/planning/condition_reads.cpp
  service/planning/recipes.cpp
  service/link/send_scheduling.cpp
  service/link/decoding.cpp
  service/link/error_text.cpp
  service/link/response_handling.cpp
  service/cache/unit_index.cpp
  service/cache/change_notifiers.cpp
  service/cache/watched_views.cpp
  service/cache/reading_values.cpp
  service/cache/write_queue.cpp
  service/cache/pending_values.cpp
  service/cache/unit_table.cpp
  service/cache/data_areas.cpp
  service/cache/writing_values.cpp)
# A panel's memory is small: the linker leaves out what nobody reaches, and only what runs for each
# poll, value, write or line of a plan is compiled for speed. -O3 pays where a list is let go and taken
# again around each callback, and nowhere else.
set(dov417_sources_for_speed
  protocol/address_text.cpp
  protocol/crc.cpp
  protocol/frame_building.cpp
  service/debug_line.cpp
  service/driver_lock.cpp
  service/plain_text.cpp
  service/planning/request_queue.cpp
  service/link/send_scheduling.cpp
  service/link/decoding.cpp
  service/link/error_text.cpp
  service/link/response_handling.cpp
  service/cache/reading_values.cpp
  service/cache/write_queue.cpp
  service/cache/pending_values.cpp
  service/cache/unit_table.cpp
  service/cache/data_areas.cpp)
set(dov417_sources_for_every_callback
  service/cache/unit_index.cpp
  service/cache/change_notifiers.cpp)
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  set_source_files_properties(${dov417_sources_for_speed} PROPERTIES COMPILE_OPTIONS -O2)
  set_source_files_properties(${dov417_sources_for_every_callback} PROPERTIES COMPILE_OPTIONS -O3)
else() # not what panels load
  compile_together(dov417modbus_protocol)
  compile_together(dov417modbus_service)
endif()
if(DOV417_QT STREQUAL "6")
  set(dov417_library_standard 17) # Qt 6's own headers ask for it
else()
  set(dov417_library_standard 11)
endif()
target_include_directories(dov417modbus_protocol PUBLIC
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
target_include_directories(dov417modbus_service PUBLIC
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/service)
set(dov417_object_libraries dov417modbus_protocol dov417modbus_service)
set(dov417_objects $<TARGET_OBJECTS:dov417modbus_protocol> $<TARGET_OBJECTS:dov417modbus_service>)
foreach(objects IN LISTS dov417_object_libraries)
  target_compile_definitions(${objects} PRIVATE
    DOV417_VERSION="${PROJECT_VERSION}"
    # Every build is a compile test of what Qt 4.8, 5 and 6 have in common.
    QT_DISABLE_DEPRECATED_BEFORE=0x050F00
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY)
  target_link_libraries(${objects} PUBLIC dov417_qtcore PRIVATE dov417_warnings)
  set_target_properties(${objects} PROPERTIES
    CXX_STANDARD ${dov417_library_standard} # not newer: sized deallocation needs a newer libstdc++
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  # A record has a kilobyte or two: the C library's memcpy knows the processor better than inline
  # code.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(${objects} PRIVATE -mstringop-strategy=libcall)
  endif()
  # ARM traps where amd64 only slows down. Unique symbols would pin the library in memory for ever.
  target_compile_options(${objects} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-Wcast-align=strict;-fno-gnu-unique>)
  target_compile_options(${objects} PRIVATE -ffunction-sections -fdata-sections
    $<$<CONFIG:Release>:-Os>)
endforeach()

add_library(dov417modbus SHARED ${dov417_objects})
add_library(dov417modbus::dov417modbus ALIAS dov417modbus)
target_link_libraries(dov417modbus PUBLIC ${dov417_qtcore_target})
target_include_directories(dov417modbus PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/dov417modbus>)
target_link_options(dov417modbus PRIVATE
  -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map
  -Wl,--no-undefined-version
  -Wl,--gc-sections)
target_link_libraries(dov417modbus PRIVATE $<BUILD_INTERFACE:dov417_hardened>)
set_target_properties(dov417modbus PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)

if(CMAKE_CROSSCOMPILING AND NOT DOV417_SANITIZE)
  # Panels keep the C library that they left the factory with.
  add_custom_command(TARGET dov417modbus POST_BUILD VERBATIM COMMAND
    ${PROJECT_SOURCE_DIR}/packaging/check-symbol-versions
    $<TARGET_FILE:dov417modbus> ${CMAKE_READELF} > symbol-versions.txt)
endif()

add_library(dov417modbus_static STATIC ${dov417_objects})
target_include_directories(dov417modbus_static PUBLIC
  $<TARGET_PROPERTY:dov417modbus_service,INTERFACE_INCLUDE_DIRECTORIES>)
target_link_libraries(dov417modbus_static PUBLIC dov417_qtcore)
