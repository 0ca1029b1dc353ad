// The bits of each SMBus protocol, counted by hand: a start or stop is one, a byte with its
// acknowledge nine.
#include "smbus/WireTime.h"

#include <gtest/gtest.h>

namespace {

using namespace Bus;
using Kind = Transfer::Kind;

struct Row {
   const char *name;
   Transfer transfer;
   uint64_t starts;
   uint64_t bytes;
};

const Row rows[] = {
   // S addr cmd P
   { "SendByte", { .kind = Kind::Write, .length = 0 }, 1, 2 },
   // S addr byte P
   { "ReceiveByte", { .kind = Kind::Read, .length = 0 }, 1, 2 },
   // S addr cmd data P
   { "WriteByte", { .kind = Kind::Write, .length = 1, .data = "1" }, 1, 3 },
   // S addr cmd Sr addr data data P
   { "ReadWord", { .kind = Kind::Read, .length = 2 }, 2, 5 },
   { "ReadWordWithPec", { .kind = Kind::Read, .length = 2, .pec = true }, 2, 6 },
   { "WriteWordWithPec", { .kind = Kind::Write, .length = 2, .data = "12", .pec = true }, 1, 5 },
   // S addr cmd data data Sr addr data data P
   { "ProcessCall", { .kind = Kind::ProcessCall, .length = 2, .data = "12" }, 2, 7 },
   // S addr cmd count data... P
   { "BlockWrite", { .kind = Kind::BlockWrite, .length = 3, .data = "123" }, 1, 6 },
   // S addr offset offset Sr addr data P
   { "WideOffset", { .kind = Kind::Read, .offsetBytes = 2, .length = 1 }, 2, 5 },
};

TEST( WireTimeTest, CountsEachProtocol ) {
   for ( const Row &row : rows ) {
      const WireCount count = onTheWires( row.transfer );
      EXPECT_EQ( count, ( WireCount{ row.starts, row.bytes, 1 } ) ) << row.name;
      EXPECT_EQ( count.bits(), row.starts + 9 * row.bytes + 1 ) << row.name;
   }
}

TEST( WireTimeTest, ABlockReadHasACountByteAndAsManyAsCame ) {
   const Transfer block{ .kind = Kind::BlockRead };
   // S addr cmd Sr addr count data... P
   EXPECT_EQ( onTheWires( block, Outcome{ .data = "12345" } ), ( WireCount{ 2, 9, 1 } ) );
}

TEST( WireTimeTest, WithoutAnAcknowledgeOnlyTheAddressPasses ) {
   const Transfer word{ .kind = Kind::Read, .length = 2 };
   const Outcome missed{ .error = std::string( noAddressAcknowledge ) };
   EXPECT_EQ( onTheWires( word, missed ), ( WireCount{ 1, 1, 1 } ) );
}

TEST( WireTimeTest, TheBusMayKnowWhereATransferEnded ) {
   const Transfer word{ .kind = Kind::Read, .length = 2 };
   EXPECT_EQ( onTheWires( word, Outcome{ .error = "e", .bytes = 2 } ), ( WireCount{ 1, 2, 1 } ) );
   EXPECT_EQ( onTheWires( word, Outcome{ .error = "e", .bytes = 3 } ), ( WireCount{ 2, 3, 1 } ) );
   EXPECT_EQ( onTheWires( word, Outcome{ .error = "e", .bytes = 0 } ), WireCount() );
}

TEST( WireTimeTest, ElseAFailureCountsAsAWholeTransfer ) {
   const Transfer word{ .kind = Kind::Read, .length = 2 };
   EXPECT_EQ( onTheWires( word, Outcome{ .error = "timed out" } ), onTheWires( word ) );
}

TEST( WireTimeTest, ABitTakesOnePeriodOfTheClock ) {
   const WireCount readWord{ 2, 5, 1 };
   EXPECT_EQ( wireTime( readWord, usualClock ), std::chrono::microseconds( 480 ) );
   EXPECT_EQ( wireTime( readWord, 400'000 ), std::chrono::microseconds( 120 ) );
}

} // namespace
