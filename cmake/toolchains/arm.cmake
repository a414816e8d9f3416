# What armhf.cmake and armel.cmake share; they set DOV417_ARM_ARCH and DOV417_ARM_TRIPLET.
#
# Compiler and C library come from Debian's cross packages, Qt from the sysroot that
# packaging/make-sysroot made (DOV417_SYSROOT, build/sysroot-ARCH where it is not set).
# A panel's own SDK brings its own toolchain file instead of this one.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DOV417_SYSROOT)
if(NOT DOV417_SYSROOT)
  get_filename_component(DOV417_SYSROOT
    "${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot-${DOV417_ARM_ARCH}" ABSOLUTE)
endif()

set(CMAKE_C_COMPILER ${DOV417_ARM_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${DOV417_ARM_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${DOV417_ARM_TRIPLET})
set(CMAKE_STRIP ${DOV417_ARM_TRIPLET}-strip)

set(CMAKE_FIND_ROOT_PATH ${DOV417_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Where the linker finds what libQt5Core.so itself needs.
set(dov417_rpath_link
  "-Wl,-rpath-link,${DOV417_SYSROOT}/usr/lib/${DOV417_ARM_TRIPLET}:${DOV417_SYSROOT}/lib/${DOV417_ARM_TRIPLET}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${dov417_rpath_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${dov417_rpath_link}")

# GCC 7 changed how some values are passed; everything here is built by the same compiler.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm;-L;${DOV417_SYSROOT})
