# orbis_sources( VARIABLE FOLDER... ): all C++ sources of these folders and of those below them. A new
# source belongs to its room's library as soon as it is there.
function( orbis_sources variable )
   foreach( folder ${ARGN} )
      file( GLOB_RECURSE found CONFIGURE_DEPENDS ${folder}/*.cpp )
      list( APPEND all ${found} )
   endforeach()
   list( SORT all )
   set( ${variable} ${all} PARENT_SCOPE )
endfunction()

# orbis_quick( SOURCE... ): sources that run seldom and include a large library, CLI11 or Beast. Under
# sanitizers, optimising takes most of the time to compile them, so they are not optimised there, unless they are to
# run often.
function( orbis_quick )
   if( ORBIS_SANITIZE AND NOT ORBIS_FUZZ )
      set_source_files_properties( ${ARGN} PROPERTIES
         SKIP_UNITY_BUILD_INCLUSION ON SKIP_PRECOMPILE_HEADERS ON COMPILE_OPTIONS -O0 )
   endif()
endfunction()
