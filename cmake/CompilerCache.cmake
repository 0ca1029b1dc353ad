# Objects come from ccache where that is installed. A clone in another folder finds them, too: paths
# below the project's root are hashed as paths from the build folder, which the compiler maps back.
find_program( CCACHE ccache )
if( CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER )
   set( CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
      CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE} )
   # Without these ccache doesn't know what is in a precompiled header.
   add_compile_options( $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess> )
   add_compile_options( "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>" )
   file( RELATIVE_PATH up ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR} )
   add_compile_options( -ffile-prefix-map=${up}= )
endif()
