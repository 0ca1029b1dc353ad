# What every target of the project is compiled with.
option( ORBIS_BENCH "Build the benchmarks" ON )
set( ORBIS_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=" )

set( CMAKE_CXX_STANDARD 20 )
set( CMAKE_CXX_STANDARD_REQUIRED ON )
set( CMAKE_CXX_EXTENSIONS OFF )
set( CMAKE_POSITION_INDEPENDENT_CODE ON )
set( CMAKE_EXPORT_COMPILE_COMMANDS ON )
set( CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin )
set( CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib )

# Assertions are part of the plug-in's behaviour: no build type may define NDEBUG.
set( CMAKE_CXX_FLAGS_RELEASE "-O2" )

# A file is named by its path below the project's root in assertions and log lines.
add_compile_options( -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= )
if( ORBIS_SANITIZE )
   add_compile_options( -fsanitize=${ORBIS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer )
   add_link_options( -fsanitize=${ORBIS_SANITIZE} )
endif()

# Link to this for the project's own sources; generated ones do without.
add_library( orbis_warnings INTERFACE )
target_compile_options( orbis_warnings INTERFACE
   -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual -Wcast-qual -Werror )
