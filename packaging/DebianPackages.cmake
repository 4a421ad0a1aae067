# Three packages for one architecture; script/package configures, builds and checks them.
set(OPC_PACKAGE_ARCHITECTURE "" CACHE STRING "Debian's name of the architecture that the packages are for")
set(OPC_PACKAGE_MAINTAINER "Output Power Controller maintainers <maintainers@output-power-controller.example>"
  CACHE STRING "Who maintains the packages")
get_target_property(OPC_SOVERSION OutputPowerController SOVERSION)
set(library liboutputpowercontroller${OPC_SOVERSION})
set(development liboutputpowercontroller-dev)
set(revision 1)

# --- what Debian wants to find in every package -----------------------------------------------------------------------
file(STRINGS debian/changelog first_line LIMIT_COUNT 1)
if(NOT first_line MATCHES "\\(${PROJECT_VERSION}-${revision}\\)")
  message(FATAL_ERROR "packaging/debian/changelog:1: begins with \"${first_line}\", not with version "
    "${PROJECT_VERSION}-${revision}; add an entry for it")
endif()
configure_file(debian/changelog changelog.Debian COPYONLY)
execute_process(COMMAND gzip -9 -n -f -k "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian" COMMAND_ERROR_IS_FATAL ANY)
foreach(pair "Library:${library}" "Development:${development}" "Program:opc")
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 component)
  list(GET pair 1 package)
  install(FILES debian/copyright "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz"
    DESTINATION "share/doc/${package}" COMPONENT ${component})
  if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/debian/${package}.lintian-overrides")
    install(FILES "debian/${package}.lintian-overrides"
      DESTINATION share/lintian/overrides RENAME "${package}" COMPONENT ${component})
  endif()
endforeach()

# Debian's man pages are compressed; whoever installs them did so before this.
install(CODE "file(GLOB pages \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/share/man/man?/*.?\")
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9 -n -f \"\${page}\" COMMAND_ERROR_IS_FATAL ANY)
endforeach()" COMPONENT Program)

# --- what the packages say of themselves ------------------------------------------------------------------------------
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME output-power-controller)
set(CPACK_PACKAGE_VENDOR "Output Power Controller maintainers")
set(CPACK_PACKAGE_CONTACT "${OPC_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR OFF)
set(CPACK_COMPONENTS_ALL Library Development Program)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE output-power-controller)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${OPC_PACKAGE_ARCHITECTURE}")
set(CPACK_DEBIAN_PACKAGE_RELEASE ${revision})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_READELF_EXECUTABLE "${CMAKE_READELF}")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(same_version "(= ${PROJECT_VERSION}-${revision})")

configure_file(debian/shlibs.in shlibs @ONLY)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "output power control of a radio unit's channels, module
A module that the control process of a radio unit loads: it switches a
channel's transmitter on and off in fixed steps and regulates its output power
in a periodic loop. One instance serves one channel.

The process supplies the platform that the module calls; the package opc has
one for Linux.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_BINARY_DIR}/shlibs;${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} ${same_version}, libxmlrpc-epi-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "output power control of a radio unit's channels, headers
What a process that loads the module is built with: the headers of the
module's interfaces and of the platform that the module expects, a CMake
package and a pkg-config file.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME opc)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library} ${same_version}")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "gnuplot-nox, bash-completion")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "output power control of a radio unit's channels, program
Loads the output power control module and runs it on Linux in real time, with
simulated transmitters or handlers of your own. A test interface, XML-RPC over
HTTP, shows and changes what a running unit does; opc ctl speaks it.

The service opc.service is not started by the installation.")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_SOURCE_DIR}/debian/conffiles;${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst\
;${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm;${CMAKE_CURRENT_SOURCE_DIR}/debian/prerm")

# The libraries of another architecture are found in the sysroot and its dpkg database.
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_SOURCE_DIR}/CPackProject.cmake")
set(CPACK_OPC_SYSROOT "${CMAKE_SYSROOT}")
include(CPack)
