# The 32-bit x86 build on a 64-bit Debian: g++-multilib, and what packaging/fetch-i386-packages unpacks.
get_filename_component( root ${CMAKE_CURRENT_LIST_DIR}/../build/i386-packages/root ABSOLUTE )
if( NOT EXISTS ${root} )
   message( FATAL_ERROR "${root} isn't there: packaging/fetch-i386-packages build/i386-packages gets it" )
endif()

set( CMAKE_C_COMPILER gcc )
set( CMAKE_CXX_COMPILER g++ )
# SSE2 has one result for a floating-point expression, as the 64-bit build has; the x87 unit's excess
# precision would give another.
set( CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse" )
set( CMAKE_CXX_FLAGS_INIT ${CMAKE_C_FLAGS_INIT} )

set( CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu )
list( APPEND CMAKE_PREFIX_PATH ${root}/usr ${root} )
# RPATH rather than RUNPATH: it also holds for the libraries of the libraries, here protobuf's zlib.
set( link_flags "-Wl,--disable-new-dtags,-rpath,${root}/lib/i386-linux-gnu" )
foreach( kind EXE SHARED MODULE )
   set( CMAKE_${kind}_LINKER_FLAGS_INIT ${link_flags} )
endforeach()
