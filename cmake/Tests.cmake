# Tests run in the project's root and know every file by its path from there, so that the same test
# compiles to the same program in every clone.
file( RELATIVE_PATH ORBIS_BUILD ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR} )

# A program of tests as all are compiled: without optimising, since they are compiled once for each run
# of them, and with the first one's precompiled header.
function( orbis_add_test_program name )
   add_executable( ${name} ${ARGN} )
   target_link_libraries( ${name} PRIVATE GTest::gmock GTest::gtest_main fmt::fmt orbis_warnings )
   target_compile_options( ${name} PRIVATE -O0 )
   get_property( precompiled GLOBAL PROPERTY orbis_precompiled_test )
   if( precompiled )
      target_precompile_headers( ${name} REUSE_FROM ${precompiled} )
   else()
      target_precompile_headers( ${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h> )
      set_property( GLOBAL PROPERTY orbis_precompiled_test ${name} )
   endif()
endfunction()

# orbis_add_test( NAME [TESTS ...] [SOURCES ...] LIBRARIES ... [DEPENDS targets that the tests run] )
# One GoogleTest program of all *Test.cpp of the folder, or of the TESTS alone, with the other SOURCES.
# Every case is a ctest test of its own, so that they run in parallel.
function( orbis_add_test name )
   cmake_parse_arguments( PARSE_ARGV 1 arg "" "TIMEOUT" "TESTS;SOURCES;LIBRARIES;DEPENDS" )
   if( NOT arg_TESTS )
      file( GLOB arg_TESTS CONFIGURE_DEPENDS *Test.cpp )
   endif()
   if( NOT arg_TIMEOUT )
      set( arg_TIMEOUT 60 )
   endif()
   orbis_add_test_program( ${name} ${arg_TESTS} ${arg_SOURCES} )
   target_link_libraries( ${name} PRIVATE ${arg_LIBRARIES} )
   if( arg_DEPENDS )
      add_dependencies( ${name} ${arg_DEPENDS} )
   endif()
   gtest_discover_tests( ${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES
      WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} PROPERTIES TIMEOUT ${arg_TIMEOUT} )
endfunction()
# As orbis_add_test, for tests that replace operator new, and functions of libraries, to count their
# calls. ThreadSanitizer replaces operator new itself.
function( orbis_add_counting_test name )
   if( NOT ORBIS_SANITIZE MATCHES thread )
      orbis_add_test( ${name} ${ARGN} )
      set_target_properties( ${name} PROPERTIES ENABLE_EXPORTS ON )
   endif()
endfunction()
include( GoogleTest )
