# Where things are installed, and how the program finds them from where it stands.
include(GNUInstallDirs)

foreach(folder BINDIR LIBDIR INCLUDEDIR DATADIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
    message(FATAL_ERROR "CMAKE_INSTALL_${folder} is the absolute path ${CMAKE_INSTALL_${folder}}; give it from the prefix, "
      "since an installation finds its parts from where it stands")
  endif()
endforeach()

# Below /usr the configuration stands in /etc; elsewhere in the prefix, which may then be moved.
set(OPC_CONFIGURATION_FOLDER "${CMAKE_INSTALL_SYSCONFDIR}/opc")
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_SYSCONFDIR}")
  set(OPC_CONFIGURATION_FOLDER "/${OPC_CONFIGURATION_FOLDER}")
endif()
set(OPC_MODULE_FOLDER "${CMAKE_INSTALL_LIBDIR}/opc")
set(OPC_INCLUDE_FOLDER "${CMAKE_INSTALL_INCLUDEDIR}/OutputPowerController")
set(OPC_PACKAGE_FOLDER "${CMAKE_INSTALL_LIBDIR}/cmake/OutputPowerController")
set(OPC_PKGCONFIG_FOLDER "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# An absolute folder stays as it is; one in the prefix becomes relative to another one in the prefix.
function(opc_relative_folder result from to)
  if(IS_ABSOLUTE "${to}")
    set(${result} "${to}" PARENT_SCOPE)
    return()
  endif()
  file(RELATIVE_PATH path "/prefix/${from}" "/prefix/${to}")
  string(REGEX REPLACE "/$" "" path "${path}")
  set(${result} "${path}" PARENT_SCOPE)
endfunction()

opc_relative_folder(OPC_MODULE_FOLDER_FROM_PROGRAM "${CMAKE_INSTALL_BINDIR}" "${OPC_MODULE_FOLDER}")
opc_relative_folder(OPC_UNIT_FILE_FROM_PROGRAM "${CMAKE_INSTALL_BINDIR}" "${OPC_CONFIGURATION_FOLDER}/unit.toml")
