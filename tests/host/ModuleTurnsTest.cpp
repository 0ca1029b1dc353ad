// When the memory of a module is read.
#include "host/session/ModuleTurns.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using namespace std::chrono_literals;

class ModuleTurnsTest : public ::testing::Test {
 protected:
   static constexpr size_t qsfp = 2, sfp = 3;

   static BoardFiles::Board makeBoard() {
      using BoardFiles::Kind;
      BoardFiles::Board board{
         .objects = { { .kind = Kind::Xcvr, .name = "qsfp1" },
                      { .kind = Kind::Xcvr, .name = "sfp1" },
                      { .kind = Kind::Module, .name = "qsfp1-module" },
                      { .kind = Kind::Module, .name = "sfp1-module", .second = "Sfp1Diagnostics" } }
      };
      board.objects[qsfp].health.in = "qsfp1";
      board.objects[sfp].health.in = "sfp1";
      return board;
   }

   const BoardFiles::Board board_ = makeBoard();
   const Limits limits_{ .periods = { { BoardFiles::Kind::Module, 10s } } };
   ModuleTurns turns_{ board_, limits_ };
   const Time begin_{ 1h };
};

TEST_F( ModuleTurnsTest, EachCageHasItsModule ) {
   EXPECT_EQ( turns_.moduleIn( 0 ), qsfp );
   EXPECT_EQ( turns_.moduleIn( 1 ), sfp );
   EXPECT_EQ( turns_.moduleIn( 2 ), std::nullopt );
   EXPECT_TRUE( turns_.isModule( qsfp ) );
   EXPECT_FALSE( turns_.isModule( 0 ) );
}

TEST_F( ModuleTurnsTest, NothingIsReadBeforeTheCageSaysThatAModuleIsThere ) {
   EXPECT_FALSE( turns_.isDue( qsfp, begin_ + 24h ) );
   turns_.presenceIs( qsfp, false, begin_ );
   EXPECT_FALSE( turns_.isDue( qsfp, begin_ + 24h ) );
}

TEST_F( ModuleTurnsTest, AModuleThatIsThereAtTheBeginningIsReadAtOnce ) {
   EXPECT_TRUE( turns_.presenceIs( qsfp, true, begin_ ) );
   EXPECT_FALSE( turns_.presenceIs( qsfp, true, begin_ ) ); // no news
   EXPECT_TRUE( turns_.isDue( qsfp, begin_ ) );
   EXPECT_TRUE( turns_.isFresh( qsfp ) );
}

TEST_F( ModuleTurnsTest, APluggedModuleGetsTheTimeThatItNeedsToStart ) {
   for ( const auto &[module, start] : { std::pair( qsfp, 2s ), std::pair( sfp, 1s ) } ) {
      turns_.presenceIs( module, true, begin_ );
      turns_.wasRead( module, begin_ );
      EXPECT_FALSE( turns_.isFresh( module ) );
      turns_.presenceIs( module, false, begin_ + 1s );
      turns_.presenceIs( module, true, begin_ + 2s );
      EXPECT_TRUE( turns_.isFresh( module ) );
      EXPECT_FALSE( turns_.isDue( module, begin_ + 2s + start - 1ms ) );
      EXPECT_TRUE( turns_.isDue( module, begin_ + 2s + start ) );
   }
}

TEST_F( ModuleTurnsTest, EachIsReadOnceInAPeriodAtItsOwnMoment ) {
   for ( const size_t module : { qsfp, sfp } ) {
      turns_.presenceIs( module, true, begin_ );
      turns_.wasRead( module, begin_ );
   }
   const Time first = turns_.next( qsfp ), second = turns_.next( sfp );
   EXPECT_EQ( ( second - first ) % 10s, second > first ? 5s : -5s );
   turns_.wasRead( qsfp, first + 30ms );
   EXPECT_EQ( turns_.next( qsfp ), first + 10s ); // what came late doesn't push the next one
}

TEST_F( ModuleTurnsTest, AModuleThatMissesIsAskedAgainSoonAndMissingAfterThreeTimes ) {
   turns_.presenceIs( qsfp, true, begin_ );
   EXPECT_FALSE( turns_.wasMissed( qsfp, begin_ ) );
   EXPECT_EQ( turns_.next( qsfp ), begin_ + 1s );
   EXPECT_FALSE( turns_.wasMissed( qsfp, begin_ + 1s ) );
   EXPECT_TRUE( turns_.wasMissed( qsfp, begin_ + 2s ) );
   EXPECT_GT( turns_.next( qsfp ), begin_ + 3s );
   turns_.wasRead( qsfp, begin_ + 20s );
   EXPECT_FALSE( turns_.wasMissed( qsfp, begin_ + 30s ) ); // counted anew
}

TEST_F( ModuleTurnsTest, ANewChildReadsEachModuleFromTheBeginning ) {
   turns_.presenceIs( qsfp, true, begin_ );
   turns_.wasRead( qsfp, begin_ );
   turns_.childStarted();
   EXPECT_TRUE( turns_.isFresh( qsfp ) );
}

} // namespace
} // namespace Host
