# Debian's armhf: ARMv7, hard float.
set(DOV417_ARM_ARCH armhf)
set(DOV417_ARM_TRIPLET arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/arm.cmake)
