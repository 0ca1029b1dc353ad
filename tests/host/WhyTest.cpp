// What is gathered for a person who asks why an object is as it is.
#include "host/serve/Why.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// A supply in its slot, which is pulled, and a thermometer beside it.
class WhyTest : public ::testing::Test {
 protected:
   static constexpr size_t slot = 0, supply = 1, fan = 2, status = 3, thermometer = 4;

   WhyTest() {
      using BoardFiles::Kind;
      const BoardFiles::ChipPlace chip{ "scd(4):1:2", "0x70=1", 0x58 };
      board_.objects = {
         { .kind = Kind::Slot, .name = "psu-slot", .driver = "PsuSlot", .chips = { chip } },
         { .kind = Kind::Psu, .name = "psu", .did = 21, .driver = "Pmbus", .chips = { chip } },
         { .kind = Kind::Fan, .name = "psu-fan", .driver = "Pmbus", .chips = { chip } },
         { .kind = Kind::Smbus, .name = "status", .driver = "Proxy", .chips = { chip } },
         { .kind = Kind::TempSensor,
           .name = "temp",
           .driver = "LM75",
           .chips = { { "scd(4):1:2", "0x70=1", 0x48 } } },
         { .kind = Kind::TempSensor,
           .name = "far",
           .driver = "LM75",
           .chips = { { "scd(4):1:2", "0x70=2", 0x48 } } },
      };
      board_.objects[supply].health.in = "psu-slot";
      board_.objects[fan].health.in = "psu";
      board_.registers["Pmbus"] = { { 0x79, 2, "STATUS_WORD", false, true },
                                    { 0x25, 1, "Latched", false, false } };
      board_.registers["LM75"] = { { 0, 2, "Temperature", true, true } };
      for ( const auto &object : board_.objects )
         report_.push_back( { .name = object.name, .health = Health::ObjectHealth() } );
      for ( const size_t absent : { slot, supply, fan } ) {
         report_[absent].state = absent == slot ? State::Absent : State::Unreadable;
         report_[absent].health = Health::ObjectHealth{ .level = Health::Level::Indeterminate,
                                                        .cause = "psu-slot absent",
                                                        .isAbsent = true };
      }
      health_.causes = {
         { .key = "far hot", .object = "far" },
         { .key = "psu-slot absent", .object = "psu-slot", .explains = { "psu", "psu-fan" } },
      };
   }
   Why why( size_t object ) const { return whyOf( board_, object, report_, health_ ); }

   BoardFiles::Board board_;
   BoardReport report_;
   HealthReport health_;
};

TEST_F( WhyTest, TheChainLeadsOverWhatTheObjectIsOnToItsCause ) {
   const Why known = why( fan );
   EXPECT_THAT( known.on, ElementsAre( "psu", "psu-slot" ) );
   ASSERT_THAT( known.chain, SizeIs( 3 ) );
   EXPECT_EQ( known.chain[0].object, "psu-fan" );
   EXPECT_EQ( known.chain[1].object, "psu" );
   EXPECT_EQ( known.chain[2].object, "psu-slot" );
   EXPECT_EQ( known.chain[2].words, "absent" );
   ASSERT_THAT( known.causes, SizeIs( 1 ) );
   EXPECT_EQ( known.causes[0].key, "psu-slot absent" );
}

TEST_F( WhyTest, AGoodObjectHasNoCause ) {
   EXPECT_THAT( why( thermometer ).causes, IsEmpty() );
   EXPECT_THAT( why( thermometer ).chain, SizeIs( 1 ) );
}

TEST_F( WhyTest, NeighboursAreTheChipsOfTheSameSegmentAndTellWhetherTheyAnswer ) {
   const auto neighbours = why( fan ).neighbours;
   ASSERT_THAT( neighbours, SizeIs( 2 ) );
   EXPECT_THAT( neighbours[0].objects, ElementsAre( "temp" ) );
   EXPECT_EQ( neighbours[0].answers, true );
   EXPECT_THAT( neighbours[1].objects, ElementsAre( "psu-slot", "psu", "psu-fan", "status" ) );
   EXPECT_EQ( neighbours[1].answers, false );
}

TEST_F( WhyTest, AnObjectThatIsNotReadDoesNotTellWhetherItsChipAnswers ) {
   board_.objects = { board_.objects[status] };
   report_ = { { .name = "status" } };
   EXPECT_EQ( why( 0 ).neighbours[0].answers, std::nullopt );
}

TEST_F( WhyTest, TransfersOfAMomentStayInTheirOrder ) {
   const auto &chips = board_.objects[supply].chips;
   const auto last = lastOf( chips, { { chips[0], 1, "first" }, { chips[0], 1, "second" } } );
   ASSERT_THAT( last, SizeIs( 2 ) );
   EXPECT_EQ( last[0].operation, "first" );
}

TEST_F( WhyTest, OnlyRegistersThatMayBeReadAreReadThroughAnObjectOfTheSameChip ) {
   const auto chips = registersOf( board_, slot ); // the supply's driver knows them
   ASSERT_THAT( chips, SizeIs( 1 ) );
   EXPECT_EQ( chips[0].through, "status" );
   EXPECT_EQ( chips[0].whyNone, "" );
   ASSERT_THAT( chips[0].registers, SizeIs( 1 ) );
   EXPECT_EQ( chips[0].registers[0].what.name, "STATUS_WORD" );
}

TEST_F( WhyTest, SaysWhyNoRegistersAreRead ) {
   EXPECT_EQ( registersOf( board_, thermometer )[0].whyNone,
              "no SMBus object of the board reaches this chip" );
   board_.registers.clear();
   EXPECT_EQ( registersOf( board_, slot )[0].whyNone,
              "registers.json of the board names none of this chip that may be read" );
}

} // namespace
} // namespace Host
