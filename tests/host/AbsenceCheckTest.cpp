#include "host/session/AbsenceCheck.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

constexpr size_t slot = 3;

// Reads the slot in one round without an answer as often as it is wanted. Returns how often.
unsigned missRound( AbsenceCheck &check ) {
   unsigned reads = 0;
   do {
      check.missed( slot );
      ++reads;
   } while ( check.wantsAnotherRead( slot ) );
   return reads;
}

TEST( AbsenceCheckTest, WantsFiveReadsInEachOfTwoRounds ) {
   AbsenceCheck check( false );
   EXPECT_FALSE( check.wantsAnotherRead( slot ) );
   EXPECT_EQ( missRound( check ), 5u );
   EXPECT_FALSE( check.isAbsent( slot ) );
   EXPECT_EQ( missRound( check ), 5u );
   EXPECT_TRUE( check.isAbsent( slot ) );
   EXPECT_EQ( missRound( check ), 1u ); // it is known
   EXPECT_TRUE( check.isAbsent( slot ) );
   EXPECT_FALSE( check.isAbsent( slot + 1 ) );
}

TEST( AbsenceCheckTest, WantsAllReadsAtOnceWhereThereIsOneRound ) {
   AbsenceCheck check( true );
   EXPECT_EQ( missRound( check ), 10u );
   EXPECT_TRUE( check.isAbsent( slot ) );
}

TEST( AbsenceCheckTest, StartsAnewAfterAnAnswer ) {
   AbsenceCheck check( false );
   for ( int i = 0; i < 9; ++i )
      check.missed( slot );
   check.answered( slot );
   EXPECT_FALSE( check.wantsAnotherRead( slot ) );
   missRound( check );
   EXPECT_FALSE( check.isAbsent( slot ) );
   missRound( check );
   EXPECT_TRUE( check.isAbsent( slot ) );
   check.answered( slot );
   EXPECT_FALSE( check.isAbsent( slot ) );
}

TEST( AbsenceCheckTest, ReadsAgainAfterALaterMissButCountsFromNoughtThen ) {
   AbsenceCheck check( false );
   for ( int i = 0; i < 4; ++i )
      check.missed( slot );
   check.missedLater( slot );
   EXPECT_FALSE( check.wantsAnotherRead( slot ) ); // five in this round
   check.missedLater( slot );
   EXPECT_TRUE( check.wantsAnotherRead( slot ) );
   for ( int i = 0; i < 9; ++i )
      check.missed( slot );
   EXPECT_FALSE( check.isAbsent( slot ) );
   check.missed( slot );
   EXPECT_TRUE( check.isAbsent( slot ) );
   check.missedLater( slot );
   EXPECT_FALSE( check.isAbsent( slot ) ); // it is back
}

TEST( AbsenceCheckTest, EndsAlsoWhereAModuleNeverMissesTheFirstAndNeverAnswers ) {
   for ( const bool isOneRound : { false, true } ) {
      AbsenceCheck check( isOneRound );
      unsigned reads = 0;
      do
         check.missedLater( slot );
      while ( ++reads < 100 && check.wantsAnotherRead( slot ) );
      EXPECT_EQ( reads, isOneRound ? 10u : 5u );
      EXPECT_FALSE( check.isAbsent( slot ) );
   }
}

TEST( AbsenceCheckTest, LearnsNothingFromAFaultOfTheBus ) {
   AbsenceCheck check( false );
   for ( int i = 0; i < 9; ++i )
      check.missed( slot );
   check.failed( slot );
   missRound( check );
   EXPECT_FALSE( check.isAbsent( slot ) );
   missRound( check );
   check.failed( slot );
   EXPECT_TRUE( check.isAbsent( slot ) ); // as was known before
}

} // namespace
} // namespace Host
