# What `cmake --install` puts where, of component Program: opc with its platform, handler modules and configuration.
install(TARGETS opc RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Program)
install(TARGETS UnitPlatform OutputPowerHandler FrequencyHandler TemperatureHandler
  LIBRARY DESTINATION "${OPC_MODULE_FOLDER}" COMPONENT Program)
# By this link a unit file finds the module among the others, by the name that it has in a build.
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/module-link")
file(CREATE_LINK "../${OPC_MODULE_LINK_NAME}"
  "${PROJECT_BINARY_DIR}/module-link/libOutputPowerController.so" SYMBOLIC)
install(FILES "${PROJECT_BINARY_DIR}/module-link/libOutputPowerController.so"
  DESTINATION "${OPC_MODULE_FOLDER}" COMPONENT Program)
install(FILES examples/unit.toml examples/storage.toml
  DESTINATION "${OPC_CONFIGURATION_FOLDER}" COMPONENT Program)
install(DIRECTORY examples/calibration
  DESTINATION "${OPC_CONFIGURATION_FOLDER}" COMPONENT Program FILES_MATCHING PATTERN "*.csv")
install(FILES examples/profiles/fade.csv DESTINATION "${OPC_CONFIGURATION_FOLDER}/profiles" COMPONENT Program)
# Scenarios, sweeps and a fleet to run and to copy from. Nothing runs by them unasked, so that they are no configuration.
install(DIRECTORY examples/fleet examples/profiles examples/scenarios examples/sweeps
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/opc/examples" COMPONENT Program)
install(FILES "${PROJECT_BINARY_DIR}/share/bash-completion/completions/opc"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT Program)
