#include "host/plugin/SupplyReader.h"

#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace Host {
namespace {

// A supply that acknowledges the commands in `values`, behind an SMBus object.
class SupplyReaderTest : public ::testing::Test {
 protected:
   SupplyReaderTest() {
      ops.size = sizeof ops;
      ops.read_byte = []( pl_smbus *asker, uint8_t command, uint8_t *value ) {
         return self( asker ).answer( command, value );
      };
      ops.read_word = []( pl_smbus *asker, uint8_t command, uint16_t *value ) {
         return self( asker ).answer( command, value );
      };
   }

   Reading read() {
      asked.clear();
      limits.reset();
      Reading last;
      limits = reader.read( { .begun = []( std::string_view ) {},
                              .done = [&last]( const Reading &reading ) { last = reading; } } );
      EXPECT_EQ( last.name, "status_registers" );
      return last;
   }

   std::map<uint8_t, uint16_t> values{ { 0x79, 0x0000 } };
   bool isGone = false;            // nothing is acknowledged
   unsigned missesOfEachLimit = 0; // so many are not acknowledged, then it is
   std::vector<uint8_t> asked;     // in the last reading
   std::optional<SupplyLimits> limits;
   pl_smbus_ops ops{};
   pl_smbus proxy{ nullptr, &ops, this };
   SupplyReader reader{ &proxy };

 private:
   static SupplyReaderTest &self( pl_smbus *asker ) {
      return *static_cast<SupplyReaderTest *>( asker->priv );
   }
   template <class Number>
   pl_status answer( uint8_t command, Number *value ) {
      asked.push_back( command );
      const auto known = values.find( command );
      const bool isMissed = command != 0x79 && ++tries_[command] <= missesOfEachLimit;
      if ( isGone || isMissed || known == values.end() )
         return PL_STATUS_TRANSACTION;
      EXPECT_EQ( sizeof( Number ), isWord( command ) ? 2u : 1u ) << unsigned{ command };
      *value = static_cast<Number>( known->second );
      return PL_STATUS_OK;
   }
   std::map<uint8_t, unsigned> tries_{};

   static bool isWord( uint8_t command ) {
      return command == 0x79 || ( command >= 0x40 && command <= 0x6B );
   }
};

TEST_F( SupplyReaderTest, AGoodSupplyTakesOneTransferARound ) {
   read();
   const Reading status = read();
   EXPECT_EQ( status.value, Scalar( std::string( "0x79=0x0000" ) ) );
   EXPECT_EQ( asked, std::vector<uint8_t>{ 0x79 } );
}

TEST_F( SupplyReaderTest, OfAnotherSupplyItReadsWhatTheWordPointsTo ) {
   read();
   values = { { 0x79, 0x2848 }, { 0x7C, 0x18 }, { 0x7D, 0x40 } };
   EXPECT_EQ( read().value, Scalar( std::string( "0x79=0x2848 0x7c=0x18" ) ) );
   EXPECT_EQ( asked, ( std::vector<uint8_t>{ 0x79, 0x7C } ) );
}

TEST_F( SupplyReaderTest, LeavesARegisterOutThatTheSupplyDoesNotHave ) {
   read();
   values = { { 0x79, 0x0404 }, { 0x7D, 0x40 } };
   EXPECT_EQ( read().value, Scalar( std::string( "0x79=0x0404 0x7d=0x40" ) ) );
   EXPECT_EQ( asked, ( std::vector<uint8_t>{ 0x79, 0x81, 0x81, 0x81, 0x7D } ) );
}

TEST_F( SupplyReaderTest, ReadsTheLimitsThatTheSupplyHasOnce ) {
   values = { { 0x79, 0 }, { 0x20, 0x17 }, { 0x42, 0x1933 }, { 0x6B, 0x0A2B } };
   read();
   ASSERT_TRUE( limits );
   EXPECT_EQ( limits->registers,
              ( Health::Pmbus::Registers{ { 0x20, 0x17 }, { 0x42, 0x1933 }, { 0x6B, 0x0A2B } } ) );
   read();
   EXPECT_FALSE( limits );
}

TEST_F( SupplyReaderTest, TwoLostAcknowledgesInARowLoseNoLimit ) {
   for ( const uint8_t command : { 0x20, 0x40, 0x42, 0x43, 0x44, 0x46, 0x4A, 0x4F, 0x51, 0x55, 0x57,
                                   0x58, 0x59, 0x6A, 0x6B } )
      values[command] = 1;
   missesOfEachLimit = 2;
   read();
   ASSERT_TRUE( limits );
   EXPECT_EQ( limits->registers.size(), 15u );
}

TEST_F( SupplyReaderTest, ReadsTheLimitsAgainWhenTheStatusHadFailed ) {
   values[0x51] = 0x005F;
   read();
   values.clear(); // pulled
   const Reading gone = read();
   EXPECT_EQ( gone.state, State::Unreadable );
   EXPECT_EQ( gone.fault.status, 6 );
   EXPECT_FALSE( limits );
   values = { { 0x79, 0 }, { 0x51, 0x0064 } }; // another one
   read();
   ASSERT_TRUE( limits );
   EXPECT_EQ( limits->registers, ( Health::Pmbus::Registers{ { 0x51, 0x0064 } } ) );
}

TEST_F( SupplyReaderTest, LimitsDuringWhichTheSupplyWentAreReadAgain ) {
   values[0x51] = 0x005F;
   limits = reader.read( { .begun = [this]( std::string_view name ) { isGone = name == "limits"; },
                           .done = []( const Reading & ) {} } );
   EXPECT_FALSE( limits );
   isGone = false;
   read();
   EXPECT_TRUE( limits );
}

TEST_F( SupplyReaderTest, AnObjectWithoutTheseOperationsHasNoStatus ) {
   ops.read_word = nullptr;
   EXPECT_EQ( read().state, State::Unsupported );
   EXPECT_TRUE( asked.empty() );
}

} // namespace
} // namespace Host
