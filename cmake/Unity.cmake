# Unity builds. The headers of Qt, of C++ and of CLI11 take longer to compile than the sources that
# include them, so that the files of a library are compiled together. A file that lacks an include is not
# noticed there: the dev preset, in which people work, compiles each file by itself.
option(DOV417_UNITY "Compile the files of each library together" ON)

# So many files need so much memory that gcc spends up to a sixth of its time on looking what of it is
# still in use. It need not look before there are two gigabytes, which is all that the panel takes.
if(DOV417_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(--param=ggc-min-expand=1000 --param=ggc-min-heapsize=2000000)
endif()

# compile_together(TARGET): all its files as one, so that no two of them may have a name of their own in common.
function(compile_together target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${DOV417_UNITY} UNITY_BUILD_BATCH_SIZE 0)
endfunction()

# parse_once(TARGET HEADER...): of other libraries, which clang goes through once for the target and for those
# that take it over by parse_once_with(TARGET FROM). gcc is no faster with its own kind of it.
set(dov417_parse_once OFF)
if(DOV417_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  set(dov417_parse_once ON)
endif()
function(parse_once target)
  if(dov417_parse_once)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
function(parse_once_with target from)
  if(dov417_parse_once)
    target_precompile_headers(${target} REUSE_FROM ${from})
  endif()
endfunction()
