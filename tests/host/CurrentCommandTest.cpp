#include "host/session/CurrentCommand.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using namespace std::chrono_literals;

class CurrentCommandTest : public ::testing::Test {
 protected:
   const Limits limits{ .init = 40s, .step = 12s, .patience = 500ms };
   const Time now{ 1h };
   CurrentCommand current{ limits };
};

TEST_F( CurrentCommandTest, IsNothingBeforeTheStartAndAfterTheEnd ) {
   EXPECT_FALSE( current.isRunning() );
   EXPECT_FALSE( current.end( now ) );
   current.start( ReadCommand{ { 5 } }, now );
   EXPECT_EQ( current.as<ReadCommand>()->objects.front(), 5u );
   EXPECT_EQ( current.as<AddCommand>(), nullptr );
   EXPECT_EQ( std::get<ReadCommand>( current.end( now ).value() ).objects.front(), 5u );
   EXPECT_FALSE( current.isRunning() );
   EXPECT_FALSE( current.overdue( now + 1h ) );
   EXPECT_EQ( current.deadlines(), std::pair( Time::max(), Time::max() ) );
}

TEST_F( CurrentCommandTest, EndsTheReadingOfOneObjectAfterTheOther ) {
   current.start( ReadCommand{ { 5, 9 } }, now );
   current.operationBegins( "speed", now );
   EXPECT_EQ( current.object(), 5u );
   EXPECT_EQ( std::get<ReadCommand>( current.end( now + 1s ).value() ).objects,
              std::vector<size_t>{ 5 } );
   EXPECT_TRUE( current.isRunning() );
   EXPECT_EQ( current.object(), 9u );
   EXPECT_EQ( current.operation(), "" ); // the next one has not begun yet
   EXPECT_FALSE( current.overdue( now + 12s ) );
   EXPECT_EQ( std::get<ReadCommand>( current.end( now ).value() ).objects,
              std::vector<size_t>{ 9 } );
   EXPECT_FALSE( current.isRunning() );
   EXPECT_FALSE( current.object() );
}

TEST_F( CurrentCommandTest, GivesEveryOperationItsOwnTime ) {
   current.start( ReadCommand{ { 5 } }, now );
   current.operationBegins( "input_voltage", now + 10s );
   current.operationBegins( "output_voltage", now + 20s );
   EXPECT_FALSE( current.overdue( now + 32s - 1ms ) );
   EXPECT_EQ( current.overdue( now + 32s ), "output_voltage did not return within 12 s" );
   EXPECT_EQ( current.deadlines(), std::pair( now + 20s + 500ms, now + 32s ) );
}

TEST_F( CurrentCommandTest, CallsOnlyAnInitSlow ) {
   current.start( ReadCommand{ { 5 } }, now );
   EXPECT_FALSE( current.slowInit( now + 1h ) );
   current.start( InitCommand{ BoardFiles::Kind::Fan }, now );
   EXPECT_FALSE( current.slowInit( now + 499ms ) );
   EXPECT_EQ( current.slowInit( now + 500ms ).value().words,
              "can't reach the SMBus server yet: pl_fan_init is trying" );
   EXPECT_EQ( current.deadlines().second, now + 40s );
}

TEST_F( CurrentCommandTest, IgnoresAnOperationWithoutACommand ) {
   current.operationBegins( "input_voltage", now );
   EXPECT_EQ( current.operation(), "" );
}

} // namespace
} // namespace Host
