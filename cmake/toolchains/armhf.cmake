# Builds for Debian's armhf, tuned for a Cortex-A9.
#
# The instructions are the baseline of that architecture, ARMv7-A with VFPv3-D16 and the hard-float calling convention:
# the same binaries run on every armhf machine, those without NEON included (a Cortex-A9 may lack it). Only the order of
# instructions is chosen for the Cortex-A9. -mcpu=cortex-a9 would allow NEON and VFPv3-D32.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(OPC_DEBIAN_ARCHITECTURE armhf)
set(OPC_TRIPLET arm-linux-gnueabihf)
set(OPC_EMULATOR qemu-arm -cpu cortex-a9)
# -Wno-psabi: a note about a calling convention that changed in GCC 7, which everything here is newer than.
set(OPC_TARGET_FLAGS "-march=armv7-a+fp -mtune=cortex-a9 -mthumb -mfloat-abi=hard -Wno-psabi")

include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")
