# Debian packages. packaging/make-packages makes them in a build of its own; plain `cpack` makes them of this
# build.
set( CPACK_GENERATOR DEB )
set( CPACK_PROJECT_CONFIG_FILE ${CMAKE_SOURCE_DIR}/packaging/PackageTools.cmake )
set( CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/debs )
set( CPACK_DEB_COMPONENT_INSTALL ON )
set( CPACK_COMPONENTS_ALL plugin platform platform-dev server host )
# What is packed is installed to /usr, with a stage before it: services name the folder that is installed to.
set( CPACK_INSTALL_PREFIX /usr )
set( CPACK_SET_DESTDIR ON )
set( CPACK_PACKAGE_NAME orbis-drivers-kelt )
set( CPACK_PACKAGE_VERSION ${PROJECT_VERSION} )
set( CPACK_PACKAGE_CONTACT "The Kelt board drivers' authors <kelt-drivers@example.org>" )
set( CPACK_STRIP_FILES ON )
set( CPACK_DEBIAN_FILE_NAME DEB-DEFAULT )
set( CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON )
set( CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON )
set( CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF )
set( CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY} )

# orbis_package( COMPONENT NAME SECTION SUMMARY TEXT [DEPENDS ...] [SCRIPTS ...] )
function( orbis_package component name section summary text )
   cmake_parse_arguments( PARSE_ARGV 5 arg "" "DEPENDS;RECOMMENDS" "SCRIPTS" )
   string( TOUPPER ${component} upper )
   set( CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE )
   set( CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE )
   set( CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE )
   set( CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${arg_DEPENDS}" PARENT_SCOPE )
   set( CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${arg_RECOMMENDS}" PARENT_SCOPE )
   set( CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${arg_SCRIPTS}" PARENT_SCOPE )
   install( FILES ${CMAKE_SOURCE_DIR}/packaging/debian/copyright
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} )
   orbis_compressed( ${CMAKE_SOURCE_DIR}/packaging/debian/changelog
      ${CMAKE_INSTALL_DATADIR}/doc/${name} ${component} )
endfunction()

# orbis_package_scripts( COMPONENT OTHER [SERVICES ...] [SOCKETS ...] [GROUPS ...] ): what a package with
# services does when it is installed and removed. OTHER is the other package that uses the same account.
function( orbis_package_scripts COMPONENT OTHER )
   cmake_parse_arguments( PARSE_ARGV 2 arg "" "" "SERVICES;SOCKETS;GROUPS" )
   list( JOIN arg_GROUPS " " GROUPS )
   list( TRANSFORM arg_SERVICES APPEND .service )
   list( JOIN arg_SERVICES " " SERVICES )
   list( TRANSFORM arg_SOCKETS APPEND .socket )
   list( JOIN arg_SOCKETS " " SOCKETS )
   foreach( script postinst prerm postrm )
      configure_file( ${CMAKE_SOURCE_DIR}/packaging/debian/${script}.in
         ${CMAKE_BINARY_DIR}/packaging/${COMPONENT}/${script} @ONLY )
      list( APPEND all ${CMAKE_BINARY_DIR}/packaging/${COMPONENT}/${script} )
   endforeach()
   set( ${COMPONENT}_scripts ${all} PARENT_SCOPE )
endfunction()

set( same "(= ${PROJECT_VERSION})" )
set( triggers ${CMAKE_SOURCE_DIR}/packaging/debian/triggers )
# Adapters of the kernel belong to the group i2c.
orbis_package_scripts( server orbis-host SERVICES orbis-smbusd orbis-smbusd-simulation GROUPS i2c )
orbis_package_scripts( host orbis-smbusd SERVICES orbis-host SOCKETS orbis-host )
orbis_package( plugin orbis-drivers-kelt libs
   "driver plug-in for switches on the Kelt board"
   "Temperature sensors, fans, power supplies, LEDs, transceiver cages, GPIO
lines and raw SMBus access of the board, for a platform daemon that loads
the plug-in. With the board's description and a simulation of it."
   DEPENDS "libplatformlibrary ${same}"
   SCRIPTS ${triggers} )
orbis_package( platform libplatformlibrary libs
   "client library of the SMBus transaction server"
   "What driver plug-ins reach orbis-smbusd by."
   SCRIPTS ${triggers} )
orbis_package( platform-dev libplatformlibrary-dev libdevel
   "client library of the SMBus transaction server - development files"
   "Header files, the messages' schema, a CMake package and a pkg-config file;
and pl.h, the interface between a platform daemon and its driver plug-ins."
   DEPENDS "libplatformlibrary ${same}, libprotobuf-dev" )
orbis_package( server orbis-smbusd admin
   "SMBus transaction server with a simulated board, and its client"
   "Carries SMBus transactions out for its clients one after another, on a
simulated board, on Linux adapters or in windows of I/O ports. orbis-smbus
reads and writes chips through it and drives the simulation."
   DEPENDS "libplatformlibrary ${same}, adduser" RECOMMENDS "orbis-drivers-kelt"
   SCRIPTS ${server_scripts} )
orbis_package( host orbis-host admin
   "brings a board up with its driver plug-in, and shows it"
   "Loads a driver plug-in in a process of its own, shows and watches every
object of a board, drives them, and serves them over HTTP at a Unix
socket."
   DEPENDS "orbis-drivers-kelt ${same}, adduser" RECOMMENDS "orbis-smbusd"
   SCRIPTS ${host_scripts} )
include( CPack )
