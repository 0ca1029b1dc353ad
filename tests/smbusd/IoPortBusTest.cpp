#include "smbusd/busses/IoPortBus.h"
#include "PrivateFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace SmbusdTest {

namespace {

using namespace Bus;
using namespace Smbusd;
using Kind = Transfer::Kind;

// A file replaces the ports; each byte is a port.
class IoPortBusTest : public ::testing::Test {
 protected:
   static Transfer read( uint32_t offset, unsigned length, uint8_t address = 0 ) {
      return { .kind = Kind::Read, .address = address, .offset = offset, .length = length };
   }
   static Transfer write( uint32_t offset, const std::string &data ) {
      return { .kind = Kind::Write,
               .offset = offset,
               .length = static_cast<unsigned>( data.size() ),
               .data = data };
   }
   std::string ports() const {
      std::ifstream stream( file );
      return ( std::stringstream() << stream.rdbuf() ).str();
   }
   TestSupport::PrivateFolder folder;
   const std::string file = folder.write( "port", "0123456789abcdef" );
   IoPortBus bus{ 4, 8, file };
};

TEST_F( IoPortBusTest, ReadsThePortAboveTheBaseWhateverTheAddress ) {
   EXPECT_EQ( bus.transfer( read( 0, 1 ) ).data, "4" );
   EXPECT_EQ( bus.transfer( read( 3, 1, 0x31 ) ).data, "7" );
   EXPECT_EQ( bus.transfer( read( 6, 2 ) ).data, "ab" );
}

TEST_F( IoPortBusTest, WritesOneOrTwoPorts ) {
   EXPECT_TRUE( bus.transfer( write( 1, "x" ) ).ok() );
   EXPECT_TRUE( bus.transfer( write( 6, "yz" ) ).ok() );
   EXPECT_EQ( ports(), "01234x6789yzcdef" );
}

TEST_F( IoPortBusTest, RefusesPortsOutsideItsRange ) {
   const std::string words = "outside the range of 8 ports from 0x0004";
   for ( const Transfer &transfer : { read( 8, 1 ), read( 7, 2 ), write( 8, "x" ), write( 7, "xy" ),
                                      read( 0xFFFFFFFF, 2 ) } ) {
      const Outcome outcome = bus.transfer( transfer );
      EXPECT_EQ( outcome.error, words );
      EXPECT_TRUE( outcome.final );
   }
   EXPECT_TRUE( bus.transfer( read( 7, 1 ) ).ok() );
   EXPECT_EQ( ports(), "0123456789abcdef" );
}

TEST_F( IoPortBusTest, RefusesUnsupportedTransfers ) {
   Transfer block = read( 0, 0 ), call = write( 0, "xy" ), checked = read( 0, 1 );
   block.kind = Kind::BlockRead;
   call.kind = Kind::ProcessCall;
   checked.pec = true;
   for ( const Transfer &transfer : { read( 0, 0 ), write( 0, "" ), read( 0, 3 ), block, call } )
      EXPECT_EQ( bus.transfer( transfer ).error,
                 "I/O ports support only reads and writes of one or two bytes" );
   EXPECT_EQ( bus.transfer( checked ).error, "I/O ports do not support PEC" );
}

TEST_F( IoPortBusTest, ReportsAPortThatDoesNotAnswer ) {
   IoPortBus beyond( 100, 8, file );
   EXPECT_EQ( beyond.transfer( read( 1, 1 ) ).error, "port 0x0065: fewer bytes than asked for" );
}

TEST_F( IoPortBusTest, OpensThePortsWhenTheyExist ) {
   IoPortBus late( 0, 8, folder.file( "late" ) );
   EXPECT_EQ( late.transfer( read( 0, 1 ) ).error,
              folder.file( "late" ) + ": No such file or directory" );
   folder.write( "late", "01234567" );
   EXPECT_EQ( late.transfer( read( 0, 1 ) ).data, "0" );
}

} // namespace

} // namespace SmbusdTest
