# Debian packages: `cpack --config build/release/CPackConfig.cmake`.
set( CPACK_GENERATOR DEB )
set( CPACK_DEB_COMPONENT_INSTALL ON )
set( CPACK_COMPONENTS_ALL plugin platform platform-dev server host )
set( CPACK_PACKAGING_INSTALL_PREFIX /usr )
set( CPACK_PACKAGE_NAME orbis-drivers-kelt )
set( CPACK_PACKAGE_VERSION ${PROJECT_VERSION} )
set( CPACK_PACKAGE_CONTACT "The Kelt board drivers' authors <kelt-drivers@example.org>" )
set( CPACK_STRIP_FILES ON )
set( CPACK_DEBIAN_FILE_NAME DEB-DEFAULT )
set( CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON )
set( CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON )
set( CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF )
set( CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR}/debs )
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

set( same "(= ${PROJECT_VERSION})" )
set( scripts ${CMAKE_SOURCE_DIR}/packaging/debian )
orbis_package( plugin orbis-drivers-kelt libs
   "driver plug-in for switches on the Kelt board"
   "Temperature sensors, fans, power supplies, LEDs, transceiver cages, GPIO
lines and raw SMBus access of the board, for a platform daemon that loads
the plug-in. With the board's description and a simulation of it."
   DEPENDS "libplatformlibrary ${same}"
   SCRIPTS ${scripts}/triggers )
orbis_package( platform libplatformlibrary libs
   "client library of the SMBus transaction server"
   "What driver plug-ins reach orbis-smbusd by."
   SCRIPTS ${scripts}/triggers )
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
   SCRIPTS ${scripts}/server/postinst ${scripts}/server/prerm ${scripts}/server/postrm )
orbis_package( host orbis-host admin
   "brings a board up with its driver plug-in, and shows it"
   "Loads a driver plug-in in a process of its own, shows and watches every
object of a board, drives them, and serves them over HTTP at a Unix
socket."
   DEPENDS "orbis-drivers-kelt ${same}, adduser" RECOMMENDS "orbis-smbusd"
   SCRIPTS ${scripts}/host/postinst ${scripts}/host/prerm ${scripts}/host/postrm )
include( CPack )
