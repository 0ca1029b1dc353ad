// The SMBus protocols, byte by byte.
#include "simulator/bus/SimulatedBus.h"
#include "smbus/WireTime.h"

#include <gtest/gtest.h>

#include <set>

namespace SimulatorTest {

namespace {

using namespace Bus;
using namespace Simulator;
using Kind = Transfer::Kind;

// Logs everything that happens on the bus. Its answers, and what it nacks, come from lists.
class LoggingChip final : public Chip {
 public:
   LoggingChip() : Chip( "recorder" ) {}
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

class SmbusProtocolTest : public ::testing::Test {
 protected:
   SmbusProtocolTest() { segment.attach( 0x20, chip ); }
   Outcome carryOut( Transfer transfer ) {
      transfer.address = 0x20;
      return bus.transfer( transfer );
   }
   LoggingChip chip;
   BusSegment segment;
   std::mutex mutex;
   SimulatedBus bus{ segment, mutex };
};

TEST_F( SmbusProtocolTest, ReadsAfterTheCommandAndARepeatedStart ) {
   chip.answers = "ab";
   EXPECT_EQ( carryOut( { .kind = Kind::Read, .offset = 5, .length = 2 } ).data, "ab" );
   EXPECT_EQ( chip.seen, "W c5 R ? ? P" );
}

// One count is of what passed here, the other of what the protocol has.
TEST_F( SmbusProtocolTest, HasAsManyBytesOnTheWiresAsTheProtocol ) {
   for ( const bool pec : { false, true } )
      for ( Transfer transfer : {
               Transfer{ .kind = Kind::Read },
               Transfer{ .kind = Kind::Read, .length = 2 },
               Transfer{ .kind = Kind::Write },
               Transfer{ .kind = Kind::Write, .length = 2, .data = "12" },
               Transfer{ .kind = Kind::ProcessCall, .length = 2, .data = "12" },
               Transfer{ .kind = Kind::BlockRead },
               Transfer{ .kind = Kind::BlockWrite, .length = 2, .data = "12" },
            } ) {
         transfer.pec = pec;
         chip.answers = std::string( 1, 3 ) + "abc";
         const Outcome outcome = carryOut( transfer );
         EXPECT_EQ( outcome.bytes, onTheWires( transfer, 3 ).bytes ) << describe( transfer ) << pec;
      }
}

TEST_F( SmbusProtocolTest, EndsWithTheByteThatIsNotAcknowledged ) {
   const Transfer write{ .kind = Kind::Write, .offset = 5, .length = 2, .data = "\x01\x02" };
   chip.refused = { "address" };
   EXPECT_EQ( carryOut( write ).bytes, 1u );
   chip.refused = { "1" };
   EXPECT_EQ( carryOut( write ).bytes, 3u );
}

TEST_F( SmbusProtocolTest, ReceivesAByteWithoutACommand ) {
   chip.answers = "a";
   EXPECT_EQ( carryOut( { .kind = Kind::Read, .offset = 5 } ).data, "a" );
   EXPECT_EQ( chip.seen, "R ? P" );
}

TEST_F( SmbusProtocolTest, WritesInTheOrderOfTheData ) {
   const Outcome outcome =
      carryOut( { .kind = Kind::Write, .offset = 5, .length = 2, .data = "\x01\x02" } );
   EXPECT_TRUE( outcome.ok() );
   EXPECT_EQ( outcome.data, "" );
   EXPECT_EQ( chip.seen, "W c5 1 2 P" );
}

TEST_F( SmbusProtocolTest, SendsTheOffsetAsTheByte ) {
   carryOut( { .kind = Kind::Write, .offset = 5 } );
   EXPECT_EQ( chip.seen, "W c5 P" );
}

TEST_F( SmbusProtocolTest, CallsAProcessWithAWordEachWay ) {
   chip.answers = "ab";
   const Transfer call{ .kind = Kind::ProcessCall, .offset = 5, .length = 2, .data = "\x01\x02" };
   EXPECT_EQ( carryOut( call ).data, "ab" );
   EXPECT_EQ( chip.seen, "W c5 1 2 R ? ? P" );
}

TEST_F( SmbusProtocolTest, ReadsTheNumberOfBytesThatTheChipSends ) {
   chip.answers = "\x03"
                  "abcd";
   EXPECT_EQ( carryOut( { .kind = Kind::BlockRead, .offset = 5 } ).data, "abc" );
   EXPECT_EQ( chip.seen, "W c5 R ? ? ? ? P" );
}

TEST_F( SmbusProtocolTest, WritesTheCountBeforeABlock ) {
   carryOut( { .kind = Kind::BlockWrite, .offset = 5, .length = 2, .data = "\x07\x08" } );
   EXPECT_EQ( chip.seen, "W c5 2 7 8 P" );
}

TEST_F( SmbusProtocolTest, PassesAWideOffsetUnchanged ) {
   chip.width = 2;
   carryOut( { .kind = Kind::Write, .offset = 0x250 } );
   EXPECT_EQ( chip.seen, "W c592 P" );
}

TEST_F( SmbusProtocolTest, RefusesATooWideOffset ) {
   EXPECT_EQ( carryOut( { .kind = Kind::Read, .offset = 0x250, .length = 1 } ).error,
              "0x250 does not fit into the chip's command of 1 byte" );
   EXPECT_EQ( chip.seen, "W P" );
}

TEST_F( SmbusProtocolTest, NamesTheMissingAcknowledge ) {
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
TEST_F( SmbusProtocolTest, AppendsThePecToAWrite ) {
   const Transfer write{
      .kind = Kind::Write, .offset = 5, .length = 1, .data = "\x01", .pec = true
   };
   carryOut( write );
   EXPECT_EQ( chip.seen, "W c5 1 192 P" );
   chip.refused = { "192" };
   EXPECT_EQ( carryOut( write ).error, "no acknowledge of the PEC" );
}

// CRC-8 of 40 05 41 61: it includes both address bytes.
TEST_F( SmbusProtocolTest, ChecksThePecOfARead ) {
   const Transfer read{ .kind = Kind::Read, .offset = 5, .length = 1, .pec = true };
   chip.answers = "a5";
   EXPECT_EQ( carryOut( read ).data, "a" );
   chip.answers = "a6";
   const Outcome wrong = carryOut( read );
   EXPECT_EQ( wrong.error, "PEC is 0x36, expected 0x35" );
   EXPECT_EQ( wrong.data, "" );
}

} // namespace

} // namespace SimulatorTest
