#include "host/terminal/BusUse.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

std::string accounts( double seconds, unsigned transfers, double wires, unsigned nacks ) {
   return R"({"seconds": )" + std::to_string( seconds ) +
          R"(, "busses": [{"bus": "scd(4):1:2", "transfers": )" + std::to_string( transfers ) +
          R"(, "failures": )" + std::to_string( nacks ) + R"(, "wireSeconds": )" +
          std::to_string( wires ) + R"(, "errors": {"nack": )" + std::to_string( nacks ) +
          R"(, "pec": 0, "timeout": 0, "held-low": 0, "other": 0}}]})";
}

TEST( BusUseTest, IsWhatPassedBetweenTwoAnswers ) {
   const auto before = readBusses( accounts( 10, 100, 2, 3 ) );
   const auto now = readBusses( accounts( 14, 180, 3, 5 ) );
   ASSERT_TRUE( before && now );
   const BusUse use = useBetween( before, *now ).at( 0 );
   EXPECT_EQ( use.bus, "scd(4):1:2" );
   EXPECT_DOUBLE_EQ( use.share, 0.25 );
   EXPECT_DOUBLE_EQ( use.transfersPerSecond, 20 );
   EXPECT_EQ( use.failures, 2u );
   EXPECT_EQ( use.errors, "2 nack" );
}

TEST( BusUseTest, IsAllSinceTheServersStartWithoutAnEarlierAnswerOrAfterANewStart ) {
   const auto now = readBusses( accounts( 4, 80, 1, 2 ) );
   for ( const auto &before :
         { std::optional<BusAccounts>(), readBusses( accounts( 10, 100, 2, 3 ) ) } ) {
      const BusUse use = useBetween( before, *now ).at( 0 );
      EXPECT_DOUBLE_EQ( use.share, 0.25 );
      EXPECT_DOUBLE_EQ( use.transfersPerSecond, 20 );
      EXPECT_EQ( use.failures, 2u );
   }
}

TEST( BusUseTest, AnErrorIsNoAccount ) {
   EXPECT_FALSE( readBusses( R"({"error": "no such socket"})" ) );
   EXPECT_FALSE( readBusses( "" ) );
}

} // namespace
} // namespace Host
