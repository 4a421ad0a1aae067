# Builds for Debian's arm64 (ARMv8-A), tuned for a Cortex-A53. The instructions are the baseline of that architecture, so
# that the binaries run on every arm64 machine: -mcpu=cortex-a53 would allow the optional CRC instructions.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(OPC_DEBIAN_ARCHITECTURE arm64)
set(OPC_TRIPLET aarch64-linux-gnu)
set(OPC_EMULATOR qemu-aarch64 -cpu cortex-a53)
set(OPC_TARGET_FLAGS "-march=armv8-a -mtune=cortex-a53")

include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")
