# The libraries that are used, from Debian's packages.
find_package( Protobuf REQUIRED )
find_package( Threads REQUIRED )
find_package( RapidJSON REQUIRED )
find_package( Boost 1.74 REQUIRED )
# Asio and Beast, whose own code is compiled once. Coroutines are not used, and what comes with them
# lacks an include in Boost 1.74.
file( GENERATE OUTPUT ${CMAKE_BINARY_DIR}/Asio.cpp
   CONTENT "#include <boost/asio/impl/src.hpp>\n#include <boost/beast/src.hpp>\n" )
add_library( asio STATIC ${CMAKE_BINARY_DIR}/Asio.cpp )
target_compile_definitions( asio PUBLIC
   BOOST_ASIO_DISABLE_CO_AWAIT BOOST_ASIO_SEPARATE_COMPILATION BOOST_BEAST_SEPARATE_COMPILATION )
target_link_libraries( asio PUBLIC Boost::headers Threads::Threads )
target_compile_options( asio PRIVATE $<$<CONFIG:Release>:-O1> ) # no transaction passes through it

find_package( CLI11 REQUIRED )
find_package( SQLite3 3.35 REQUIRED ) # RETURNING

# libi2c has neither a CMake package nor one for pkg-config.
find_library( I2C_LIBRARY i2c REQUIRED )
find_path( I2C_INCLUDE_DIR i2c/smbus.h REQUIRED )
add_library( i2c::i2c UNKNOWN IMPORTED )
set_target_properties( i2c::i2c PROPERTIES
   IMPORTED_LOCATION ${I2C_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${I2C_INCLUDE_DIR} )

# Nor has libsystemd a CMake package.
find_library( SYSTEMD_LIBRARY systemd REQUIRED )
find_path( SYSTEMD_INCLUDE_DIR systemd/sd-journal.h REQUIRED )
add_library( systemd::systemd UNKNOWN IMPORTED )
set_target_properties( systemd::systemd PROPERTIES
   IMPORTED_LOCATION ${SYSTEMD_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${SYSTEMD_INCLUDE_DIR} )

# By the names that are no linker scripts: those name libtinfo as this machine has it, in the 32-bit build, too.
find_library( NCURSES_LIBRARY NAMES libncursesw.so.6 REQUIRED )
find_library( TINFO_LIBRARY NAMES libtinfo.so.6 REQUIRED )
find_path( NCURSES_INCLUDE_DIR curses.h REQUIRED )
add_library( ncurses::ncursesw UNKNOWN IMPORTED )
set_target_properties( ncurses::ncursesw PROPERTIES
   IMPORTED_LOCATION ${NCURSES_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${NCURSES_INCLUDE_DIR}
   INTERFACE_COMPILE_DEFINITIONS NCURSES_WIDECHAR=1 INTERFACE_LINK_LIBRARIES ${TINFO_LIBRARY} )

find_package( fmt REQUIRED )
find_package( spdlog REQUIRED )
if( BUILD_TESTING AND CMAKE_SIZEOF_VOID_P EQUAL 8 )
   find_package( GTest REQUIRED )
elseif( BUILD_TESTING )
   # The compiled library is the other word size's, but its package brings the sources.
   set( INSTALL_GTEST OFF )
   add_subdirectory( /usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM )
endif()
