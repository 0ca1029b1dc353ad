# Read by cpack before it makes packages. It would also make them without these tools: packages that depend on
# no library and don't run where they are installed.
foreach( tool_and_package file:file dpkg-shlibdeps:dpkg-dev )
   string( REPLACE ":" ";" pair ${tool_and_package} )
   list( GET pair 0 tool )
   list( GET pair 1 package )
   find_program( found_${tool} ${tool} )
   if( NOT found_${tool} )
      message( FATAL_ERROR "${tool} is missing, from the Debian package ${package}. No packages were made. "
         "packaging/make-packages installs what it needs." )
   endif()
endforeach()
