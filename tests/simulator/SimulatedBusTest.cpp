#include "simulator/bus/SimulatedBus.h"
#include "ManualClock.h"
#include "simulator/chips/LM75.h"

#include <gtest/gtest.h>

#include <set>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using Kind = Transfer::Kind;

// Writes down what comes over the wires, answers from a list and refuses what it is told to.
class Recorder final : public Chip {
 public:
   Recorder() : Chip( "recorder" ) {}
   void reset() override {}
   unsigned commandBytes() const override { return width; }
   bool addressed( Direction direction ) override {
      seen += direction == Direction::Read ? "R " : "W ";
      return acknowledges( "address" );
   }
   bool command( uint32_t command ) override {
      seen += "c" + std::to_string( command ) + " ";
      return acknowledges( "command" );
   }
   bool write( uint8_t byte ) override {
      seen += std::to_string( byte ) + " ";
      return acknowledges( std::to_string( byte ) );
   }
   uint8_t read() override {
      seen += "? ";
      const char next = answers.empty() ? '\xFF' : answers[0];
      answers.erase( 0, 1 );
      return static_cast<uint8_t>( next );
   }
   void stopped() override { seen += "P"; }

   bool acknowledges( const std::string &what ) const { return !refused.contains( what ); }

   unsigned width = 1;
   std::string seen;
   std::string answers;
   std::set<std::string> refused;
};

class ProtocolTest : public ::testing::Test {
 protected:
   ProtocolTest() { segment.attach( 0x20, chip ); }
   Outcome carryOut( Transfer transfer ) {
      transfer.address = 0x20;
      return bus.transfer( transfer );
   }
   Recorder chip;
   BusSegment segment;
   std::mutex mutex;
   SimulatedBus bus{ segment, mutex };
};

TEST_F( ProtocolTest, ReadsBehindTheCommandAndARepeatedStart ) {
   chip.answers = "ab";
   EXPECT_EQ( carryOut( { .kind = Kind::Read, .offset = 5, .length = 2 } ).data, "ab" );
   EXPECT_EQ( chip.seen, "W c5 R ? ? P" );
}

TEST_F( ProtocolTest, ReceivesAByteWithoutACommand ) {
   chip.answers = "a";
   EXPECT_EQ( carryOut( { .kind = Kind::Read, .offset = 5 } ).data, "a" );
   EXPECT_EQ( chip.seen, "R ? P" );
}

TEST_F( ProtocolTest, WritesInTheOrderOfTheData ) {
   const Outcome outcome =
      carryOut( { .kind = Kind::Write, .offset = 5, .length = 2, .data = "\x01\x02" } );
   EXPECT_TRUE( outcome.ok() );
   EXPECT_EQ( outcome.data, "" );
   EXPECT_EQ( chip.seen, "W c5 1 2 P" );
}

TEST_F( ProtocolTest, SendsTheOffsetAsTheByte ) {
   carryOut( { .kind = Kind::Write, .offset = 5 } );
   EXPECT_EQ( chip.seen, "W c5 P" );
}

TEST_F( ProtocolTest, CallsAProcessWithAWordEachWay ) {
   chip.answers = "ab";
   const Transfer call{ .kind = Kind::ProcessCall, .offset = 5, .length = 2, .data = "\x01\x02" };
   EXPECT_EQ( carryOut( call ).data, "ab" );
   EXPECT_EQ( chip.seen, "W c5 1 2 R ? ? P" );
}

TEST_F( ProtocolTest, ReadsAsManyBytesAsTheChipsCountSays ) {
   chip.answers = "\x03"
                  "abcd";
   EXPECT_EQ( carryOut( { .kind = Kind::BlockRead, .offset = 5 } ).data, "abc" );
   EXPECT_EQ( chip.seen, "W c5 R ? ? ? ? P" );
}

TEST_F( ProtocolTest, WritesABlockWithItsCountAhead ) {
   carryOut( { .kind = Kind::BlockWrite, .offset = 5, .length = 2, .data = "\x07\x08" } );
   EXPECT_EQ( chip.seen, "W c5 2 7 8 P" );
}

TEST_F( ProtocolTest, HandsAWideOffsetOverWhole ) {
   chip.width = 2;
   carryOut( { .kind = Kind::Write, .offset = 0x250 } );
   EXPECT_EQ( chip.seen, "W c592 P" );
}

TEST_F( ProtocolTest, RefusesAnOffsetThatTheChipsCommandCannotHold ) {
   EXPECT_EQ( carryOut( { .kind = Kind::Read, .offset = 0x250, .length = 1 } ).error,
              "0x250 does not fit into the chip's command of 1 byte" );
   EXPECT_EQ( chip.seen, "W P" );
}

TEST_F( ProtocolTest, SaysWhatWasNotAcknowledged ) {
   const Transfer write{ .kind = Kind::Write, .offset = 5, .length = 2, .data = "\x01\x02" };
   const Transfer block{ .kind = Kind::BlockWrite, .offset = 5, .length = 2, .data = "\x07\x08" };
   const std::tuple<const char *, Transfer, const char *> rows[] = {
      { "address", write, "no acknowledge of the address" },
      { "command", write, "no acknowledge of the command" },
      { "2", write, "no acknowledge of data byte 2 of 2" },
      { "2", block, "no acknowledge of the block count" },
      { "7", block, "no acknowledge of data byte 1 of 2" },
   };
   for ( const auto &[refused, transfer, error] : rows ) {
      chip.refused = { refused };
      EXPECT_EQ( carryOut( transfer ).error, error );
      EXPECT_TRUE( chip.seen.ends_with( "P" ) ); // the bus is free again
   }
}

// CRC-8 of 40 05 01: the address byte of a write to 0x20, the command, the data.
TEST_F( ProtocolTest, AppendsThePecToAWrite ) {
   const Transfer write{
      .kind = Kind::Write, .offset = 5, .length = 1, .data = "\x01", .pec = true
   };
   carryOut( write );
   EXPECT_EQ( chip.seen, "W c5 1 192 P" );
   chip.refused = { "192" };
   EXPECT_EQ( carryOut( write ).error, "no acknowledge of the PEC" );
}

// CRC-8 of 40 05 41 61: both address bytes count.
TEST_F( ProtocolTest, ChecksThePecOfARead ) {
   const Transfer read{ .kind = Kind::Read, .offset = 5, .length = 1, .pec = true };
   chip.answers = "a5";
   EXPECT_EQ( carryOut( read ).data, "a" );
   chip.answers = "a6";
   const Outcome wrong = carryOut( read );
   EXPECT_EQ( wrong.error, "PEC is 0x36, expected 0x35" );
   EXPECT_EQ( wrong.data, "" );
}

// A PCA9548 at 0x70 with an LM75 at 0x48 behind channel 0 and behind channel 1, another mux at
// 0x71 with an LM75 at 0x49 behind channel 2, and an LM75 at 0x4A in front.
class WireTest : public ::testing::Test {
 protected:
   WireTest() {
      for ( const auto &[chip, celsius] :
            { std::pair( &first, 24.5 ), { &second, 31.0 }, { &deep, 58.5 }, { &front, -3.5 } } )
         chip->temperatureIs( celsius );
      root.attach( 0x70, mux );
      root.attach( 0x4A, front );
      channel0.attach( 0x48, first );
      channel1.attach( 0x48, second );
      channel2.attach( 0x71, inner );
      behindInner.attach( 0x49, deep );
      root.join( mux, 0, channel0 );
      root.join( mux, 1, channel1 );
      root.join( mux, 2, channel2 );
      channel2.join( inner, 7, behindInner );
   }
   Outcome send( uint8_t address, uint32_t byte, bool pec = false ) {
      return bus.transfer(
         { .kind = Kind::Write, .address = address, .offset = byte, .pec = pec } );
   }
   Outcome read( uint8_t address ) {
      return bus.transfer( { .kind = Kind::Read, .address = address, .length = 2 } );
   }

   ManualClock clock;
   PCA9548 mux{ "mux" }, inner{ "inner" };
   LM75 first{ "first", clock }, second{ "second", clock }, deep{ "deep", clock },
      front{ "front", clock };
   BusSegment root, channel0, channel1, channel2, behindInner;
   std::mutex mutex;
   SimulatedBus bus{ root, mutex };
   const std::string front35 = "\xFC\x80";
};

TEST_F( WireTest, ReachesOnlyWhatAMuxJoins ) {
   EXPECT_EQ( read( 0x48 ).error, "no acknowledge of the address" );
   send( 0x70, 0x01 );
   EXPECT_EQ( read( 0x48 ).data, "\x18\x80" );
   send( 0x70, 0x02 );
   EXPECT_EQ( read( 0x48 ).data, std::string( "\x1F\x00", 2 ) );
   send( 0x70, 0x00 );
   EXPECT_EQ( read( 0x48 ).error, "no acknowledge of the address" );
}

TEST_F( WireTest, ReachesThroughTwoMuxesInARow ) {
   send( 0x70, 0x04 );
   EXPECT_FALSE( read( 0x49 ).ok() );
   send( 0x71, 0x80 );
   EXPECT_EQ( read( 0x49 ).data, "\x3A\x80" );
   send( 0x70, 0x00 );
   EXPECT_FALSE( read( 0x49 ).ok() );
   EXPECT_FALSE( send( 0x71, 0x00 ).ok() ); // it stays open, out of reach
}

TEST_F( WireTest, KeepsWhatIsInFrontOfAMuxInReach ) {
   EXPECT_EQ( read( 0x4A ).data, front35 );
   send( 0x70, 0xFF );
   EXPECT_EQ( read( 0x4A ).data, front35 );
}

TEST_F( WireTest, CollidesWhereTwoJoinedChannelsHaveOneAddress ) {
   send( 0x70, 0x03 );
   const Outcome outcome = read( 0x48 );
   EXPECT_EQ( outcome.error, "collision of first and second" );
   EXPECT_EQ( outcome.data, "" );
}

TEST_F( WireTest, LetsBothChipsOfACollisionTakeWhatIsWritten ) {
   send( 0x70, 0x03 );
   const Outcome outcome = bus.transfer(
      { .kind = Kind::Write, .address = 0x48, .offset = 3, .length = 2, .data = { 0x19, 0x00 } } );
   EXPECT_EQ( outcome.error, "collision of first and second" );
   EXPECT_EQ( first.tOs(), 25 );
   EXPECT_EQ( second.tOs(), 25 );
}

TEST_F( WireTest, ReachesNothingThroughAMuxThatIsPulled ) {
   send( 0x70, 0x01 );
   mux.presentIs( false );
   EXPECT_FALSE( read( 0x48 ).ok() );
   EXPECT_EQ( send( 0x70, 0x01 ).error, "no acknowledge of the address" );
   mux.presentIs( true );
   EXPECT_FALSE( read( 0x48 ).ok() ); // it has just powered up
}

TEST_F( WireTest, ReachesNoChipThatIsPulled ) {
   front.presentIs( false );
   EXPECT_EQ( read( 0x4A ).error, "no acknowledge of the address" );
}

// CRC-8 of E0 01 is 44: what a chip without PEC takes for its byte.
TEST_F( WireTest, LetsAChipWithoutPecTakeTheCodeForData ) {
   EXPECT_TRUE( send( 0x70, 0x01, true ).ok() );
   EXPECT_EQ( bus.transfer( { .kind = Kind::Read, .address = 0x70 } ).data, "\x44" );
}

} // namespace

} // namespace SimulatorTest
