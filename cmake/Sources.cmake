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
