#include "http/Listener.h"

#include <gmock/gmock.h>

namespace Http {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string nameOr( const std::string &address, bool anyAddress = false ) {
   try {
      return Listener::atAddress( address, anyAddress ).name();
   } catch ( const std::runtime_error &wrong ) {
      return wrong.what();
   }
}

TEST( ListenerTest, NamesThePortThatItGot ) {
   EXPECT_THAT( nameOr( "127.0.0.1:0" ), StartsWith( "127.0.0.1:" ) );
   EXPECT_THAT( nameOr( "localhost:0" ), StartsWith( "127.0.0.1:" ) );
   EXPECT_EQ( nameOr( "127.0.0.1:0" ).find( ":0" ), std::string::npos );
}

TEST( ListenerTest, SaysWhatAnAddressIs ) {
   for ( const char *wrong :
         { "", "8080", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:80x", "127.0.0.1:65536",
           "example.com:80", "::1:80x", "[127.0.0.1]:80" } )
      EXPECT_THAT( nameOr( wrong ), HasSubstr( "is not an address: it must be as" ) ) << wrong;
}

TEST( ListenerTest, OtherMachinesHaveToBeWanted ) {
   EXPECT_THAT( nameOr( "0.0.0.0:0" ), HasSubstr( "give --http-any-address besides" ) );
   EXPECT_THAT( nameOr( "0.0.0.0:0", true ), StartsWith( "0.0.0.0:" ) );
}

TEST( ListenerTest, SaysWhyAnAddressIsNotFree ) {
   const Listener one = Listener::atAddress( "127.0.0.1:0", false );
   EXPECT_EQ( nameOr( one.name() ), "can't serve at " + one.name() + ": Address already in use" );
}

TEST( ListenerTest, NothingIsGivenWithoutASocketUnit ) { EXPECT_TRUE( Listener::given().empty() ); }

} // namespace
} // namespace Http
