# Unity builds. The headers of Qt, of C++ and of CLI11 take longer to compile than the sources that
# include them, so that the files of a room are compiled together. A file that lacks an include is not
# noticed there: the dev preset, in which people work, compiles each file by itself.
option(DOV417_UNITY "Compile the files of each room together" ON)

# compile_together(TARGET SOURCE...): the files of each folder as one.
function(compile_together target)
  if(NOT DOV417_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  foreach(source IN LISTS ARGN)
    cmake_path(GET source PARENT_PATH room)
    cmake_path(GET room FILENAME room)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${room})
  endforeach()
endfunction()
