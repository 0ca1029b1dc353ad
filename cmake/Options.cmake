# Compiler options of every target.
option( ORBIS_BENCH "Build the benchmarks" ON )
option( ORBIS_FUZZ "Build the libFuzzer targets, which needs clang" OFF )
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
set( CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g" )
set( CMAKE_CXX_FLAGS_MINSIZEREL "-Os" )

# A file is named by its path below the project's root in assertions and log lines.
add_compile_options( -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= )
if( ORBIS_SANITIZE )
   add_compile_options( -fsanitize=${ORBIS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer )
   # From the build folder, so that a compiler cache sees the same option in every clone.
   file( RELATIVE_PATH ignore ${CMAKE_BINARY_DIR} ${CMAKE_CURRENT_LIST_DIR}/sanitizers.ignore )
   add_compile_options( $<$<CXX_COMPILER_ID:Clang>:-fsanitize-ignorelist=${ignore}> )
   add_link_options( -fsanitize=${ORBIS_SANITIZE} )
endif()

# What Debian hardens its packages with (dpkg-buildflags, hardening=+all), for what is installed:
# _FORTIFY_SOURCE wants an optimising build, and does not work with sanitizers. Executables are
# position-independent; every reference is bound when a program or library is loaded and can't be
# overwritten afterwards.
include( CheckPIESupported )
check_pie_supported()
add_library( orbis_hardening INTERFACE )
target_compile_options( orbis_hardening INTERFACE
   $<$<CONFIG:Release>:-fstack-protector-strong -Wformat -Werror=format-security -Wdate-time -D_FORTIFY_SOURCE=2> )
target_link_options( orbis_hardening INTERFACE -Wl,-z,relro,-z,now )

# Link to this for the project's own sources; generated ones do without.
add_library( orbis_warnings INTERFACE )
target_compile_options( orbis_warnings INTERFACE
   -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual -Wcast-qual -Werror )
