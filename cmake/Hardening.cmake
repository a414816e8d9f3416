# What Debian hardens its programs with. tests/hardening looks at the binaries. Sanitizers check the
# same places better.
include(CheckPIESupported)
check_pie_supported()
add_library(dov417_hardened INTERFACE)
target_link_options(dov417_hardened INTERFACE -Wl,-z,relro -Wl,-z,now)
if(NOT DOV417_SANITIZE)
  target_compile_options(dov417_hardened INTERFACE -fstack-protector-strong)
  target_compile_definitions(dov417_hardened INTERFACE
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>) # which asks for optimisation
endif()
