# Run by `cmake --install`: writes the units of services, with the folders that are installed to.
get_filename_component( prefix "${CMAKE_INSTALL_PREFIX}" ABSOLUTE )
foreach( folder BINDIR SBINDIR DATADIR )
   cmake_path( ABSOLUTE_PATH ${folder} BASE_DIRECTORY "${prefix}" NORMALIZE )
endforeach()
file( READ "${templates}/sandbox" SANDBOX )
foreach( service ${services} )
   set( unit "${prefix}/lib/systemd/system/${service}.service" )
   message( STATUS "Installing: $ENV{DESTDIR}${unit}" )
   configure_file( "${templates}/${service}.service" "$ENV{DESTDIR}${unit}" @ONLY
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ )
   list( APPEND CMAKE_INSTALL_MANIFEST_FILES "${unit}" )
endforeach()
