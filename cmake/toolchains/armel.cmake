# Debian's armel: ARMv5T, soft float.
set(DOV417_ARM_ARCH armel)
set(DOV417_ARM_TRIPLET arm-linux-gnueabi)
include(${CMAKE_CURRENT_LIST_DIR}/arm.cmake)
