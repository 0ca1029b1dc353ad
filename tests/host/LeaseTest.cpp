#include "host/serve/Lease.h"

#include "PrivateFolder.h"
#include "host/serve/LastSettings.h"
#include "smbus/Control.pb.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class HostLeaseTest : public ::testing::Test {
 protected:
   BoardFiles::SafeState state_{ .lease = 15,
                                 .writes = { { { "i2c:1", "0x70=4", 0x2E }, 0x30, 0xFF, {} },
                                             { { "i2c:1", "", 0x20 }, 8, 1, 3 } } };
   Time now_{ 1h };
};

TEST_F( HostLeaseTest, LeavesTheWritesOfTheBoardsSafeState ) {
   const auto request = Lease( state_, 12s ).renewal( now_, now_ );
   ASSERT_TRUE( request );
   EXPECT_EQ( request->lease().milliseconds(), 16'500u );
   ASSERT_EQ( request->lease().write_size(), 2 );
   const SmbusControl::SafeWrite &fan = request->lease().write( 0 ),
                                 &led = request->lease().write( 1 );
   EXPECT_EQ( fan.bus(), "i2c:1" );
   EXPECT_EQ( fan.path(), "0x70=4" );
   EXPECT_EQ( fan.address(), 0x2Eu );
   EXPECT_EQ( fan.register_(), 0x30u );
   EXPECT_EQ( fan.value(), 0xFFu );
   EXPECT_FALSE( fan.has_mask() );
   EXPECT_EQ( led.mask(), 3u );
}

TEST_F( HostLeaseTest, EndsAtTheSameTimeAsLongAsTheChildSaysNothing ) {
   const Lease lease( state_, 12s );
   EXPECT_EQ( lease.renewal( now_, now_ + 10s )->lease().milliseconds(), 6'500u );
   EXPECT_TRUE( lease.renewal( now_, now_ + 14'999ms ) );
   EXPECT_FALSE( lease.renewal( now_, now_ + 15s ) );
}

TEST_F( HostLeaseTest, NobodyHasOneBeforeTheBoardIsUnderControl ) {
   EXPECT_FALSE( Lease( state_, 12s ).renewal( {}, now_ ) );
}

TEST_F( HostLeaseTest, IsLongerThanAnOperationAndANewStartOfTheChild ) {
   EXPECT_EQ( Lease( state_, 12s ).time(), 15s );
   EXPECT_EQ( Lease( state_, 30s ).time(), 33s );
   state_.lease = 60;
   EXPECT_EQ( Lease( state_, 30s ).time(), 60s );
}

class LastSettingsTest : public ::testing::Test {
 protected:
   LastSettingsTest() {
      const BoardFiles::ChipPlace fans{ "i2c:1", "", 0x2E }, leds{ "i2c:1", "", 0x20 };
      board_.safeState = { .writes = { { fans, 0x30, 0xFF, {} }, { leds, 8, 1, 3 } } };
      board_.objects = {
         { .kind = BoardFiles::Kind::Fan, .name = "fan1", .chips = { fans } },
         { .kind = BoardFiles::Kind::Led, .name = "led", .chips = { leds } },
         { .kind = BoardFiles::Kind::Fan, .name = "psu-fan", .chips = { { "i2c:2", "", 0x58 } } }
      };
      for ( const auto &object : board_.objects )
         report_.push_back( { .name = object.name } );
   }
   void set( size_t object, const char *name, const Scalar &value ) {
      report_[object].values = { { { .name = name, .value = value } } };
   }
   BoardFiles::Board board_;
   BoardReport report_;
   TestSupport::PrivateFolder folder_;
   const std::string file_ = folder_.file( "host.set" );
};

TEST_F( LastSettingsTest, KnowsWhatWasSetOnWhatTheSafeStateChangesAlsoInTheNextProcess ) {
   set( 0, "target", int64_t{ 12000 } );
   set( 1, "setting", std::string( "good" ) );
   set( 2, "target", int64_t{ 5000 } ); // of another chip
   LastSettings( board_, file_ ).look( report_ );
   const LastSettings next( board_, file_ );
   EXPECT_EQ( next.words(), "fan1 12000, led good" );
   EXPECT_THAT( next.actions(), ElementsAre( Pair( 0, Action{ "set_rpm", { 12000 } } ),
                                             Pair( 1, testing::Field( &Action::operation,
                                                                      "set_light_setting" ) ) ) );
}

TEST_F( LastSettingsTest, WhatWasNeverSetIsNotSetAgain ) {
   LastSettings settings( board_, file_ );
   settings.look( report_ );
   EXPECT_EQ( settings.words(), "nothing" );
   EXPECT_THAT( settings.actions(), IsEmpty() );
   EXPECT_FALSE( std::filesystem::exists( file_ ) );
}

TEST_F( LastSettingsTest, ADamagedFileIsLikeNone ) {
   folder_.write( "host.set", "{ \"fan1\": \"12" );
   EXPECT_EQ( LastSettings( board_, file_ ).words(), "nothing" );
   folder_.write( "host.set", R"({ "fan1": "fast", "led": 7, "gone": "1" })" );
   EXPECT_THAT( LastSettings( board_, file_ ).actions(), IsEmpty() );
}

TEST_F( LastSettingsTest, WithoutAPlaceForTheFileItKnowsAsLongAsTheProcessRuns ) {
   set( 0, "target", int64_t{ 12000 } );
   LastSettings settings( board_, folder_.file( "no/such/folder" ) );
   settings.look( report_ );
   EXPECT_EQ( settings.words(), "fan1 12000" );
}

} // namespace
} // namespace Host
