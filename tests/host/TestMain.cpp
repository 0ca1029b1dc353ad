#include "host/plugin/Child.h"

#include <gtest/gtest.h>
#include <string_view>

// "host_tests child" is the child process, like "orbis-host child".
int main( int argc, char **argv ) {
   if ( argc == 2 && std::string_view( argv[1] ) == "child" )
      return Host::runChild( Host::childSocket, Host::childPage );
   ::testing::InitGoogleTest( &argc, argv );
   return RUN_ALL_TESTS();
}
