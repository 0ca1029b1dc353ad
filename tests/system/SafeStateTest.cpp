// What becomes of the fans when nobody controls the board: host and server with a clock that is
// turned by hand.
#include "BoardInOneProcess.h"
#include "PrivateFolder.h"
#include "host/serve/LastSettings.h"
#include "host/serve/Lease.h"
#include "smbus/Control.pb.h"
#include "smbusd/lease/Lease.h"

#include <gmock/gmock.h>

#include <random>

namespace {

using namespace std::chrono_literals;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr auto step = 100ms;
constexpr auto operationLimit = 12s; // of an operation of the plug-in

class SafeStateTest : public ::testing::Test {
 protected:
   SafeStateTest() {
      board.start();
      pass( 2s );
   }

   // The host's process, the plug-in's process, and whether the plug-in's answers.
   bool hasHost = true;
   bool hasChild = true;
   void killChild() {
      hasChild = false;
      board.kill();
   }
   void startChild() {
      hasChild = true;
      board.start();
   }

   void pass( std::chrono::milliseconds time ) {
      for ( const auto end = passed + time; passed < end; passed += step ) {
         board.pass( step );
         if ( hasHost && passed % 1000ms == 0ms ) {
            if ( hasChild )
               board.work();
            settings.look( board.report() );
            renew();
         }
         server.work();
      }
   }
   void renew() {
      const auto request = host.renewal( board.supervisor().inControl( board.now() ), board.now() );
      if ( !request || !server.take( request->lease(), { -1, 1000, 100 } ).ran() )
         return;
      ++returns;
      for ( const auto &[object, action] : settings.actions() )
         board.act( board.board().objects[object].name, action );
   }
   void drive( const std::string &fan, int64_t rpm ) {
      EXPECT_TRUE( board.act( fan, { "set_rpm", { rpm } } ) );
   }
   double speed( const std::string &rotor ) {
      SmbusControl::Request request;
      request.mutable_get()->set_part( rotor );
      request.mutable_get()->set_name( "rpm" );
      return board.ask( request ).quantity().value();
   }
   uint8_t registerAt( const BoardFiles::SafeRegister &one ) {
      Smbusd::SafeWrite place{ .bus = *Bus::parseRootBusId( one.chip.bus ),
                               .address = static_cast<uint8_t>( one.chip.address ),
                               .number = one.number };
      const auto response = board.run( place.reading() );
      return static_cast<uint8_t>( response.response( 0 ).data().at( 0 ) );
   }
   std::vector<int> duties() {
      std::vector<int> all;
      for ( const BoardFiles::SafeRegister &one : board.board().safeState->writes )
         all.push_back( registerAt( one ) );
      return all;
   }

   std::chrono::milliseconds passed{ 0 };
   unsigned returns = 0; // of a host that was told that the safe state was set
   BoardInOneProcess board{ { "fan1", "fan2", "fan3", "fan4", "fan5" } };
   const Host::Lease host{ *board.board().safeState, operationLimit };
   TestSupport::PrivateFolder folder;
   Host::LastSettings settings{ board.board(), folder.file( "host.set" ) };
   std::vector<std::string> written;
   Smbusd::Lease server{ board.clock(), [this]( const Smbusd::SafeWrite &write ) {
                           const auto response = board.run( write.writing( write.value ) );
                           if ( !response.failed() )
                              written.push_back( toText( write ) );
                           return response.failed() ? response.error() : std::string();
                        } };
};

constexpr auto lease = 15s;

// Host or child end at any moment, and stay away.
TEST_F( SafeStateTest, AThousandTimesTheFansRunAtFullSpeedWithinTheLeaseAndThreeSeconds ) {
   std::mt19937 random( 17 );
   const auto upTo = [&random]( int most ) {
      return std::uniform_int_distribution<int>( 0, most )( random );
   };
   for ( int fan = 1; fan <= 5; ++fan )
      drive( "fan" + std::to_string( fan ), 12000 );
   for ( int moment = 0; moment < 1000; ++moment ) {
      SCOPED_TRACE( moment );
      drive( "fan" + std::to_string( 1 + upTo( 4 ) ), 3000 + upTo( 15000 ) );
      pass( upTo( 40 ) * step );
      const auto before = duties();
      written.clear();
      const bool isHost = upTo( 1 ) == 0;
      isHost ? void( hasHost = false ) : killChild();
      pass( lease - 100ms );
      ASSERT_THAT( written, IsEmpty() );
      pass( 3s + 100ms );
      ASSERT_EQ( written.size(), 10u );
      ASSERT_THAT( duties(), Each( 255 ) );
      pass( upTo( 200 ) * step );
      ASSERT_EQ( written.size(), 10u ); // once
      const unsigned told = returns;
      if ( isHost )
         killChild(); // a new host has a new child
      hasHost = true;
      startChild();
      pass( 3s );
      ASSERT_EQ( returns, told + 1 );
      ASSERT_EQ( duties(), before ); // it has set again what it last set
   }
}

TEST_F( SafeStateTest, TheRotorsFollowWithTheirInertia ) {
   drive( "fan1", 5000 );
   pass( 20s );
   const double slow = speed( "fan1.inlet" );
   EXPECT_LT( slow, 6000 );
   hasHost = false;
   pass( lease + 3s );
   EXPECT_GT( speed( "fan1.inlet" ), slow );
   pass( 20s );
   EXPECT_GT( speed( "fan1.inlet" ), 20000 );
}

TEST_F( SafeStateTest, AChildThatIsBackWithinTheLeaseChangesNothing ) {
   for ( const auto away : { 100ms, 5000ms, 14000ms, 14900ms } ) {
      killChild();
      pass( away );
      startChild();
      pass( 3s );
   }
   EXPECT_THAT( written, IsEmpty() );
}

TEST_F( SafeStateTest, AHostThatIsStoppedForLessThanTheLeaseChangesNothing ) {
   for ( int i = 0; i < 20; ++i ) {
      hasHost = false;
      pass( lease - 100ms );
      hasHost = true;
      pass( 1s );
   }
   EXPECT_THAT( written, IsEmpty() );
}

TEST_F( SafeStateTest, AHostThatIsStoppedForLongerIsDead ) {
   hasHost = false;
   pass( lease + 3s );
   EXPECT_EQ( written.size(), 10u );
}

// Each transfer takes two seconds, and fails: the child answers.
TEST_F( SafeStateTest, ASlowBusChangesNothing ) {
   unsigned slow = 0;
   board.missWhere( [&]( const Bus::Transfer & ) {
      if ( slow++ < 100 ) {
         board.pass( 2s );
         renew();
         server.work();
      }
      return true;
   } );
   pass( 20s );
   EXPECT_GT( slow, 100u );
   EXPECT_THAT( written, IsEmpty() );
}

TEST_F( SafeStateTest, ABusThatFailsGetsTheSafeStateWhenItWorksAgain ) {
   bool fails = true;
   board.missWhere( [&fails]( const Bus::Transfer &transfer ) {
      return fails && transfer.kind == Bus::Transfer::Kind::Write;
   } );
   hasHost = false;
   pass( lease + 60s );
   EXPECT_THAT( written, IsEmpty() );
   EXPECT_THAT( server.state().error(), HasSubstr( "no acknowledge" ) );
   fails = false;
   pass( 1100ms );
   EXPECT_EQ( written.size(), 10u );
}

} // namespace
