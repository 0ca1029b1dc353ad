// Days of a host beside supplies that miss an acknowledge now and then, in seconds: supervisor,
// plug-in, server's transactions and simulated chips in one process, with a clock that the test
// turns. ORBIS_ABSENCE_HOURS is how long the long runs are.
#include "BoardInOneProcess.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace {

using namespace std::chrono_literals;
using Host::State;

constexpr unsigned outOf = 50; // of so many transfers one is missed

// What was told of the slots in some rounds.
struct Told {
   unsigned absent = 0, unreadable = 0, ok = 0;
   unsigned mostReads = 0; // of a slot in one round
};

class AbsenceTest : public ::testing::Test {
 protected:
   static unsigned longRun() {
#ifdef ORBIS_SANITIZED
      constexpr unsigned usual = 1;
#else
      constexpr unsigned usual = 24;
#endif
      const char *asked = std::getenv( "ORBIS_ABSENCE_HOURS" );
      return 3600 * ( asked ? static_cast<unsigned>( std::atoi( asked ) ) : usual );
   }
   static Told rounds( BoardInOneProcess &board, unsigned count ) {
      Told told;
      for ( unsigned round = 0; round < count; ++round ) {
         board.round();
         for ( const char *slot : { "psu1-slot", "psu2-slot" } ) {
            const State state = board.presence( slot ).state;
            told.absent += state == State::Absent;
            told.unreadable += state == State::Unreadable;
            told.ok += state == State::Ok;
            told.mostReads = std::max( told.mostReads, board.readsOf( slot ) );
         }
      }
      return told;
   }
   static void print( const char *what, unsigned count, const Told &told ) {
      fmt::print( "{}: {} rounds, {} ok, {} unreadable, {} absent, at most {} reads of a slot in a "
                  "round\n",
                  what, count, told.ok, told.unreadable, told.absent, told.mostReads );
   }
   static bool isOfASupply( const Bus::Transfer &transfer ) {
      return transfer.address == 0x51 || transfer.address == 0x58 || transfer.address == 0x59;
   }
};

TEST_F( AbsenceTest, NoSupplyIsAbsentInADayInWhichOneAcknowledgeIn50GetsLostAtRandom ) {
   BoardInOneProcess board( { "psu1-slot", "psu2-slot" } );
   std::mt19937 random( 11 ); // NOLINT: the same run each time
   board.missWhere( [&random]( const Bus::Transfer &transfer ) {
      return isOfASupply( transfer ) && random() % outOf == 0;
   } );
   board.start();
   const Told told = rounds( board, longRun() );
   print( "at random", longRun(), told );
   EXPECT_EQ( told.absent, 0u );
   EXPECT_GT( told.mostReads, 1u );
}

// Then the miss of any transfer counts, and only the number of reads helps.
TEST_F( AbsenceTest, NoSupplyIsAbsentInHoursAlsoWhereTheFirstTransferIsNotKnown ) {
   BoardInOneProcess board( { "psu1-slot", "psu2-slot" } );
   board.forgetFirstTransfers();
   std::mt19937 random( 12 ); // NOLINT: the same run each time
   board.missWhere( [&random]( const Bus::Transfer &transfer ) {
      return isOfASupply( transfer ) && random() % outOf == 0;
   } );
   board.start();
   const unsigned count = longRun() / 4;
   const Told told = rounds( board, count );
   print( "at random, the first transfer is not known", count, told );
   EXPECT_EQ( told.absent, 0u );
   EXPECT_GT( told.mostReads, 1u );
}

TEST_F( AbsenceTest, NoSupplyIsAbsentInADayInWhichEvery50thAcknowledgeGetsLost ) {
   BoardInOneProcess board( { "psu1-slot", "psu2-slot" } );
   for ( const char *chip : { "psu1", "psu2", "psu2-fru" } )
      board.chip( chip ).faultsAre( { .nacks = 1, .outOf = outOf } );
   board.start();
   const Told told = rounds( board, longRun() );
   print( "every 50th", longRun(), told );
   EXPECT_EQ( told.absent, 0u );
   EXPECT_GT( told.mostReads, 1u );
}

// The reads of a slot must not fall on the lost acknowledges again and again, whatever the period
// and wherever it starts.
TEST_F( AbsenceTest, NoSupplyIsAbsentWhateverThePeriodOfTheLostAcknowledges ) {
   constexpr unsigned longest = 64, count = 12;
   BoardInOneProcess board( { "psu1-slot", "psu2-slot" } );
   board.start();
   for ( unsigned period = 2; period <= longest; ++period )
      for ( unsigned phase = 0; phase < period; ++phase ) {
         unsigned transfers = phase;
         board.missWhere( [&transfers, period]( const Bus::Transfer &transfer ) {
            return isOfASupply( transfer ) && ++transfers % period == 0;
         } );
         ASSERT_EQ( rounds( board, count ).absent, 0u )
            << "period " << period << ", from " << phase;
      }
}

TEST_F( AbsenceTest, APulledSupplyIsAbsentWithinTwoPeriodsAndThereAgainInTheNext ) {
   BoardInOneProcess board( { "psu1-slot", "psu2-slot" } );
   board.start();
   board.round();
   const Host::Reading before = board.presence( "psu2-slot" );
   ASSERT_EQ( before.state, State::Ok );
   board.pull( "psu2" );
   board.round();
   const Host::Reading missed = board.presence( "psu2-slot" );
   EXPECT_EQ( missed.state, State::Unreadable );
   EXPECT_EQ( missed.value, before.value );
   EXPECT_EQ( board.ageOf( "psu2-slot" ), 1 );
   board.round();
   EXPECT_EQ( board.presence( "psu2-slot" ).state, State::Absent );
   EXPECT_EQ( board.presence( "psu1-slot" ).state, State::Ok );
   board.round();
   EXPECT_EQ( board.readsOf( "psu2-slot" ), 1u ); // what is known needs no more reads than others
   board.insert( "psu2" );
   board.round();
   EXPECT_EQ( board.presence( "psu2-slot" ).state, State::Ok );
}

} // namespace
