# What the targets' toolchain files share: Debian's cross compiler, a sysroot, qemu-user for what has to run.
# Set OPC_SYSROOT to use another sysroot than the one of script/sysroot.
set(CMAKE_SYSTEM_NAME Linux)

# CMake reads this file again for each of its trial builds: they must see the same folder.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES OPC_SYSROOT)
set(OPC_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot/${OPC_DEBIAN_ARCHITECTURE}"
  CACHE PATH "Where the target's headers and libraries are")
get_filename_component(CMAKE_SYSROOT "${OPC_SYSROOT}" ABSOLUTE)
if(NOT EXISTS "${CMAKE_SYSROOT}/usr/include")
  message(FATAL_ERROR "No headers in ${CMAKE_SYSROOT}/usr/include: run script/sysroot ${OPC_DEBIAN_ARCHITECTURE}, "
    "or set OPC_SYSROOT to the folder of your target")
endif()

set(CMAKE_C_COMPILER ${OPC_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${OPC_TRIPLET}-g++)
set(CMAKE_C_FLAGS_INIT "${OPC_TARGET_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${OPC_TARGET_FLAGS}")
set(CMAKE_LIBRARY_ARCHITECTURE ${OPC_TRIPLET})

# Programs are this machine's, all else is the target's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_DIR} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
  "${CMAKE_SYSROOT}/usr/lib/${OPC_TRIPLET}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")

# Libraries that only libraries need.
set(rpath_links "")
foreach(folder lib usr/lib)
  string(APPEND rpath_links " -Wl,-rpath-link,${CMAKE_SYSROOT}/${folder}/${OPC_TRIPLET}")
endforeach()
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "${rpath_links}")
endforeach()

# Tests, and what CMake has to run, run under emulation with the sysroot's libraries. By its full path, since some tests
# empty the search path.
list(POP_FRONT OPC_EMULATOR emulator)
find_program(OPC_EMULATOR_PROGRAM "${emulator}" REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR "${OPC_EMULATOR_PROGRAM}" ${OPC_EMULATOR} -L "${CMAKE_SYSROOT}")
