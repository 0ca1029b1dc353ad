# What `cmake --install` puts where, by component: plugin, platform, platform-dev, server, host, and the licence.
# An installation can be moved: nothing in it but the services has its absolute path.
include( CMakePackageConfigHelpers )
include( packaging/Prefix.cmake )

set( cmake_package ${CMAKE_INSTALL_LIBDIR}/cmake/OrbisPlatform )
set( here ${CMAKE_CURRENT_LIST_DIR} )
set( made ${CMAKE_BINARY_DIR}/packaging )

# The plug-in, what its drivers want, and the board.
install( TARGETS OrbisDriversKelt LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT plugin )
install( DIRECTORY boards/ DESTINATION ${CMAKE_INSTALL_DATADIR}/orbis/boards COMPONENT plugin )
set( documents ${CMAKE_INSTALL_DATADIR}/doc/orbis-drivers-kelt )
install( FILES README.md DESTINATION ${documents} COMPONENT plugin )
install( DIRECTORY docs DESTINATION ${documents} COMPONENT plugin )
# Debian's packages name the distribution's copy instead.
install( FILES LICENSE DESTINATION ${documents} COMPONENT licence )

# Rules, alerts and a dashboard.
install( DIRECTORY monitoring DESTINATION ${CMAKE_INSTALL_DATADIR}/orbis COMPONENT host )

# The client library, and what you need to write a host or another server.
install( TARGETS PlatformLibrary platform_headers EXPORT OrbisPlatform
   LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT platform NAMELINK_COMPONENT platform-dev
   INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orbis )
install( FILES platform/pl.h
   DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orbis COMPONENT platform-dev )
install( FILES platform/PlatformLibrary/PLSocket.h
   DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orbis/PlatformLibrary COMPONENT platform-dev )
install( FILES platform/OrbisUtil/Smbus.proto ${CMAKE_BINARY_DIR}/platform/generated/OrbisUtil/Smbus.pb.h
   DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orbis/OrbisUtil COMPONENT platform-dev )
install( EXPORT OrbisPlatform NAMESPACE Orbis:: FILE OrbisPlatformTargets.cmake
   DESTINATION ${cmake_package} COMPONENT platform-dev )
configure_package_config_file( ${here}/cmake/OrbisPlatformConfig.cmake.in
   ${made}/OrbisPlatformConfig.cmake INSTALL_DESTINATION ${cmake_package} )
write_basic_package_version_file( ${made}/OrbisPlatformConfigVersion.cmake COMPATIBILITY SameMinorVersion )
install( FILES ${made}/OrbisPlatformConfig.cmake ${made}/OrbisPlatformConfigVersion.cmake
   DESTINATION ${cmake_package} COMPONENT platform-dev )
file( RELATIVE_PATH from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX} )
cmake_path( SET from_pkgconfig NORMALIZE ${from_pkgconfig} )
configure_file( ${here}/pkgconfig/orbis-platform.pc.in ${made}/orbis-platform.pc @ONLY )
install( FILES ${made}/orbis-platform.pc
   DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT platform-dev )

# The programs.
install( TARGETS orbis-smbusd RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT server )
install( TARGETS orbis-smbus RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT server )
install( TARGETS orbis-host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT host )

# Their completion: one script, which bash looks for by the name of the program.
set( completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions )
foreach( program orbis-smbus orbis-smbusd )
   install( FILES ${here}/bash-completion/orbis
      DESTINATION ${completions} RENAME ${program} COMPONENT server )
endforeach()
install( FILES ${here}/bash-completion/orbis
   DESTINATION ${completions} RENAME orbis-host COMPONENT host )

# Where they look for the libraries.
file( RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR} )
set_target_properties( orbis-smbus orbis-host PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}" )
set_target_properties( OrbisDriversKelt PROPERTIES INSTALL_RPATH "$ORIGIN" )
orbis_install_without_run_path( ${CMAKE_INSTALL_LIBDIR}/libOrbisDriversKelt.so plugin )
orbis_install_without_run_path( ${CMAKE_INSTALL_BINDIR}/orbis-smbus server )
orbis_install_without_run_path( ${CMAKE_INSTALL_BINDIR}/orbis-host host )

# Their services. All are confined in the same way.
orbis_install_services( server orbis-smbusd orbis-smbusd-simulation )
orbis_install_services( host orbis-host )
install( FILES ${here}/systemd/writes.json DESTINATION ${CMAKE_INSTALL_DATADIR}/orbis COMPONENT server )
install( FILES ${here}/systemd/orbis-host.socket DESTINATION lib/systemd/system COMPONENT host )
foreach( component server host )
   install( FILES ${here}/systemd/orbis.tmpfiles
      DESTINATION lib/tmpfiles.d RENAME orbis-${component}.conf COMPONENT ${component} )
endforeach()

# Manual pages, as a distribution wants them.
find_program( GZIP gzip REQUIRED )
function( orbis_compressed file destination component )
   get_filename_component( name ${file} NAME )
   set( compressed ${made}/${component}/${name}.gz )
   add_custom_command( OUTPUT ${compressed}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${made}/${component}
      COMMAND ${GZIP} -9nc ${file} > ${compressed}
      DEPENDS ${file} VERBATIM )
   string( MAKE_C_IDENTIFIER ${component}_${name} target )
   add_custom_target( ${target} ALL DEPENDS ${compressed} )
   install( FILES ${compressed} DESTINATION ${destination} COMPONENT ${component} )
endfunction()
orbis_compressed( ${here}/man/orbis-smbusd.8 ${CMAKE_INSTALL_MANDIR}/man8 server )
orbis_compressed( ${here}/man/orbis-smbus.1 ${CMAKE_INSTALL_MANDIR}/man1 server )
orbis_compressed( ${here}/man/orbis-host.1 ${CMAKE_INSTALL_MANDIR}/man1 host )
