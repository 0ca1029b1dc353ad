// orbis-smbusd without free descriptors.
#include "PrivateFolder.h"
#include "RawClient.h"
#include "StartedProgram.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <vector>

namespace SmbusdTest {

namespace {

using TestSupport::RawClient;

class DescriptorsProgramTest : public ::testing::TestWithParam<const char *> {
 protected:
   size_t countOf( const std::string &words ) const {
      const std::string text = folder.read( "log" );
      size_t count = 0;
      for ( size_t at = 0; ( at = text.find( words, at ) ) != text.npos; at += words.size() )
         ++count;
      return count;
   }
   TestSupport::PrivateFolder folder;
   const std::string socket = folder.file( "smbus.sock" );
};

#ifndef ORBIS_SANITIZED // a sanitizer needs descriptors, too
TEST_P( DescriptorsProgramTest, SaysThatItCannotAcceptAndGoesOnLater ) {
   TestSupport::StartedProgram server( { "/bin/sh", "-c", "ulimit -n 40 && exec \"$0\" \"$@\"",
                                         ORBIS_SMBUSD, "--socket", socket, "--clients-per-process",
                                         "64", "--simulate", KELT_BOARD "/topology.json",
                                         "--simulation", KELT_BOARD "/simulation.json" },
                                       { .errorFile = folder.file( "log" ) } );
   folder.waitFor( "log", "serving" );
   std::vector<std::unique_ptr<RawClient>> clients;
   for ( int i = 0; i < 40; ++i )
      clients.push_back( std::make_unique<RawClient>( socket ) );
   folder.waitFor( "log", "can't accept" );
   RawClient surplus( socket + GetParam() );
   const std::string place = socket + GetParam() + ": ";
   const size_t end = folder.waitFor( "log", place + "can't accept a client: Too many open files" );
   surplus.send( std::string( 1, '\0' ) ); // an empty message
   clients.erase( clients.begin(), clients.begin() + 20 );
   EXPECT_TRUE( surplus.receiveMessage() );
   folder.waitFor( "log", place + "accepts clients again", end );
   EXPECT_LT( countOf( place + "can't accept" ), 4u ); // more than one if it was full again
   server.signal( SIGTERM );
   EXPECT_EQ( server.wait(), 0 );
}

INSTANTIATE_TEST_SUITE_P( BothSockets, DescriptorsProgramTest, testing::Values( "", ".control" ) );
#endif

} // namespace

} // namespace SmbusdTest
