#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <csignal>

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// Two thermometers behind two channels of a mux; the second may be missing.
class FaultTest : public ::testing::Test {
 protected:
   static constexpr const char *topology =
      R"([{"type":"I2C","ham":"OrbisSmbus","bus":{"id":0,"devices":[
         {"did":100,"driver":"PCA9548","address":{"address":112}}],"muxes":[{"did":100,"busses":[
         {"id":1,"devices":[{"did":1,"address":{"address":72}}]},
         {"id":2,"devices":[{"did":2,"address":{"address":72}}]}]}]}}])";
   static constexpr const char *objects =
      R"([{"type":"temp_sensor","name":"first","device":{"did":1,"driver":"LM75",
         "address":{"address":72}},"alert":60.0,"critical":70.0},
         {"type":"temp_sensor","name":"second","device":{"did":2,"driver":"LM75",
         "address":{"address":72}},"alert":60.0,"critical":70.0}])";
   static std::string simulation( const char *secondIsPresent ) {
      return std::string( R"({"seed":1,"chips":[{"did":100,"name":"mux","chip":"PCA9548"},)"
                          R"({"did":1,"name":"a","chip":"LM75","temperature":24.5},)"
                          R"({"did":2,"name":"b","chip":"LM75","temperature":31,"present":)" ) +
             secondIsPresent + "}]}";
   }
};

TEST_F( FaultTest, AChipThatDoesNotAnswerIsUnreadableAndHidesNoOther ) {
   RunningBoard board( topology, objects, simulation( "false" ) );
   const Shown shown = board.show();
   EXPECT_EQ( shown.exitCode, 1 );
   EXPECT_EQ( shown.values.at( "first temperature" ), 24.5 );
   EXPECT_THAT( shown.faults.at( "second" ), StartsWith( "unreadable: " ) );
   EXPECT_THAT( shown.faults.at( "second" ),
                HasSubstr( "Assertion `device_->setThreshold( Threshold::Alert, value ) == "
                           "PL_STATUS_OK' failed" ) );
}

TEST_F( FaultTest, AMuxIsClosedAgainAlsoAfterAFailedBatch ) {
   RunningBoard board( topology, objects, simulation( "false" ) );
   board.show();
   EXPECT_THAT( board.smbus( { "read", "i2c:0:0x70" } ), HasSubstr( "0x00" ) );
}

TEST_F( FaultTest, AServerThatDiesShowsWithinAPeriodAndComesBackWithNothingRestartedByHand ) {
   RunningBoard board( topology, objects, simulation( "true" ) );
   auto watch = board.watch( "0.2" );
   size_t at = board.waitForRow( "first", "24.5", 0 );
   board.killServer();
   at = board.waitForRow( "first", "unreadable", at );
   board.startServer();
   at = board.waitForRow( "first", "24.5", at );
   board.waitForRow( "second", "31.0", at );
   watch->signal( SIGINT );
   EXPECT_EQ( watch->wait(), 0 );
}

TEST_F( FaultTest, WithoutAServerShowEndsAndSaysSo ) {
   RunningBoard board( topology, objects, simulation( "true" ) );
   board.killServer();
   const Shown shown = board.show();
   EXPECT_EQ( shown.exitCode, 1 );
   EXPECT_THAT( shown.faults.at( "first" ), HasSubstr( "SMBus server" ) );
   EXPECT_THAT( shown.faults.at( "second" ), HasSubstr( "smbus.sock: its server has ended" ) );
}

} // namespace
