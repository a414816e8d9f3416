# What tool, simulated controller and panel are compiled with. They wait for a line, for people: -O2 takes
# a third longer to compile and shows in none of their figures (docs/measurements.md); the library keeps it.
add_library(dov417_program INTERFACE)
target_link_libraries(dov417_program INTERFACE dov417_warnings dov417_hardened)
target_compile_options(dov417_program INTERFACE $<$<CONFIG:Release>:-O1>)
if(DOV417_SANITIZE)
  # Each access would be asked about. The address sanitizer sees null, too; where an address has to be
  # aligned the library alone is compiled with it (armhf-ubsan).
  target_compile_options(dov417_program INTERFACE -fno-sanitize=null,alignment)
endif()
