# DOV417_SANITIZE: a list for -fsanitize, for instance "address,undefined" (what ON stands for).
if(DOV417_SANITIZE)
  set(dov417_sanitizers ${DOV417_SANITIZE})
  if(NOT dov417_sanitizers MATCHES "[a-z]")
    set(dov417_sanitizers address,undefined)
  endif()
  add_compile_options(
    -fsanitize=${dov417_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${dov417_sanitizers})
  if(CMAKE_CROSSCOMPILING AND NOT dov417_sanitizers MATCHES "address")
    add_link_options(-static-libubsan) # the sysroot has no copy of the runtime
    add_compile_options(-marm) # Thumb functions have odd addresses: misaligned, it would say
  endif()
endif()
