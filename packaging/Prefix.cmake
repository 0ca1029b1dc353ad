# What is done while it is installed, because only then the folder is known that it is installed to: the build
# may be configured with another one.

# Below /usr the loader finds libraries by itself. Debian wants no other path in programs there.
function( orbis_install_without_run_path file component )
   install( CODE "if( CMAKE_INSTALL_PREFIX STREQUAL /usr )
      file( RPATH_REMOVE FILE \"\$ENV{DESTDIR}/usr/${file}\" )
   endif()" COMPONENT ${component} )
endfunction()

# orbis_install_services( COMPONENT SERVICE... ): systemd's units.
function( orbis_install_services component )
   install( CODE "
   set( services ${ARGN} )
   set( templates \"${CMAKE_SOURCE_DIR}/packaging/systemd\" )
   set( BINDIR \"${CMAKE_INSTALL_BINDIR}\" )
   set( SBINDIR \"${CMAKE_INSTALL_SBINDIR}\" )
   set( DATADIR \"${CMAKE_INSTALL_DATADIR}\" )" COMPONENT ${component} )
   install( SCRIPT ${CMAKE_SOURCE_DIR}/packaging/WriteServices.cmake COMPONENT ${component} )
endfunction()
