# The project's own code is warning free; headers of other libraries are not its business.
add_library(dov417_warnings INTERFACE)
target_compile_options(dov417_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
