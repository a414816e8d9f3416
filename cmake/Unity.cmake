# Unity builds. The headers of Qt, of C++ and of CLI11 take longer to compile than the sources that
# include them, so that the files of a room are compiled together. A file that lacks an include is not
# noticed there: the sanitizer builds compile each file by itself, but for those with the longest
# headers.
set(DOV417_UNITY ON CACHE STRING
  "What is compiled together: ON, OFF, or HEAVY: what includes CLI11, Qt Widgets or GoogleTest")
set_property(CACHE DOV417_UNITY PROPERTY STRINGS ON HEAVY OFF)

# compile_together(TARGET [HEAVY] SOURCE...): the files of each folder as one.
function(compile_together target)
  cmake_parse_arguments(PARSE_ARGV 1 together "HEAVY" "" "")
  if(DOV417_UNITY STREQUAL "OFF" OR (DOV417_UNITY STREQUAL "HEAVY" AND NOT together_HEAVY))
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  foreach(source IN LISTS together_UNPARSED_ARGUMENTS)
    cmake_path(GET source PARENT_PATH room)
    cmake_path(GET room FILENAME room)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${room})
  endforeach()
endfunction()
