#include "host/plugin/Child.h"

#include <gtest/gtest.h>
#include <string_view>

// Started as "PROGRAM child" it is what orbis-host is when started so.
int main( int argc, char **argv ) {
   if ( argc == 2 && std::string_view( argv[1] ) == "child" )
      return Host::runChild( Host::childSocket );
   ::testing::InitGoogleTest( &argc, argv );
   return RUN_ALL_TESTS();
}
