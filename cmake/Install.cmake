# What `cmake --install` puts where, of the module. Components: Library (the module), Development (what builds against
# it). InstallProgram.cmake has the third, Program.
include(CMakePackageConfigHelpers)

set_target_properties(OutputPowerControllerInterfaces PROPERTIES EXPORT_NAME Interfaces)
install(TARGETS OutputPowerController OutputPowerControllerInterfaces EXPORT OutputPowerControllerTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Library NAMELINK_COMPONENT Development
  FILE_SET HEADERS DESTINATION "${OPC_INCLUDE_FOLDER}" COMPONENT Development)

# --- CMake package, for the installed tree and for this build ---------------------------------------------------------
install(EXPORT OutputPowerControllerTargets
  NAMESPACE OutputPowerController:: DESTINATION "${OPC_PACKAGE_FOLDER}" COMPONENT Development)
export(EXPORT OutputPowerControllerTargets
  NAMESPACE OutputPowerController:: FILE "${PROJECT_BINARY_DIR}/OutputPowerControllerTargets.cmake")
configure_package_config_file(
  cmake/OutputPowerControllerConfig.cmake.in "${PROJECT_BINARY_DIR}/OutputPowerControllerConfig.cmake"
  INSTALL_DESTINATION "${OPC_PACKAGE_FOLDER}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/OutputPowerControllerConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/OutputPowerControllerConfig.cmake"
        "${PROJECT_BINARY_DIR}/OutputPowerControllerConfigVersion.cmake"
  DESTINATION "${OPC_PACKAGE_FOLDER}" COMPONENT Development)

# --- pkg-config -------------------------------------------------------------------------------------------------------
get_target_property(soversion OutputPowerController SOVERSION)
set(OPC_MODULE_LINK_NAME "libOutputPowerController.so.${soversion}")
opc_relative_folder(OPC_PREFIX_FROM_PKGCONFIG "${OPC_PKGCONFIG_FOLDER}" ".")
configure_file(cmake/OutputPowerController.pc.in "${PROJECT_BINARY_DIR}/OutputPowerController.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/OutputPowerController.pc"
  DESTINATION "${OPC_PKGCONFIG_FOLDER}" COMPONENT Development)

# --- what to copy from ------------------------------------------------------------------------------------------------
install(DIRECTORY examples/minimal-platform examples/c-client
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/liboutputpowercontroller-dev/examples" COMPONENT Development)
