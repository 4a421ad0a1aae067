# Read by cpack: dependencies on libraries of another architecture come from its sysroot.
if(CPACK_OPC_SYSROOT)
  set(ENV{OPC_SYSROOT} "${CPACK_OPC_SYSROOT}")
  set(ENV{DEB_HOST_ARCH} "${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}")
  set(SHLIBDEPS_EXECUTABLE "${CMAKE_CURRENT_LIST_DIR}/sysroot-shlibdeps")
endif()
