#include "host/serve/ServerAccounts.h"

#include "PrivateFolder.h"
#include "smbus/Control.pb.h"

#include <boost/asio.hpp>
#include <gmock/gmock.h>
#include <sockets/Frames.h>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// The control socket of a server is the test's.
class ServerAccountsTest : public ::testing::Test {
 protected:
   void listen() { acceptor_.emplace( loop_, stream_protocol::endpoint( path_ + ".control" ) ); }
   // Accepts a client and sends these bytes, in two pieces, whatever it asks.
   void answerWith( const std::string &bytes ) {
      listen();
      acceptor_->async_accept( [this, bytes]( const auto &, stream_protocol::socket socket ) {
         client_.emplace( std::move( socket ) );
         for ( const size_t from : { size_t{ 0 }, bytes.size() / 2 } )
            boost::asio::write( *client_, boost::asio::buffer( bytes.substr(
                                             from, from == 0 ? bytes.size() / 2 : bytes.npos ) ) );
      } );
   }
   void ask( std::chrono::milliseconds limit = std::chrono::seconds( 10 ) ) {
      const ServerAccounts accounts( loop_, path_, limit );
      bool answered = false;
      accounts.ask( [&]( std::string json, std::string error ) {
         EXPECT_FALSE( answered );
         answered = true;
         json_ = std::move( json );
         error_ = std::move( error );
      } );
      while ( !answered )
         loop_.run_one();
      loop_.poll();
   }

   const TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "smbus.sock" );
   boost::asio::io_context loop_{ 1 };
   std::optional<stream_protocol::acceptor> acceptor_;
   std::optional<stream_protocol::socket> client_;
   std::string json_, error_;
};

TEST_F( ServerAccountsTest, GivesWhatTheServerHasCounted ) {
   SmbusControl::Response response;
   response.set_seconds( 10 );
   SmbusControl::BusLoad &bus = *response.add_bus();
   bus.set_bus( "i2c:0" );
   bus.set_wires( true );
   bus.set_clock( 100'000 );
   bus.mutable_totals()->set_transfers( 3 );
   bus.mutable_totals()->set_wire_ns( 1'440'000 );
   answerWith( Sockets::framed( response ) );
   ask();
   EXPECT_EQ( error_, "" );
   EXPECT_THAT( json_, HasSubstr( R"({"seconds":10.0,"interval":10.0,"busses":[{"bus":"i2c:0",)"
                                  R"("clock":100000,"transfers":3,"failures":0,"bytes":0,)"
                                  R"("wireSeconds":0.00144,)" ) );
}

TEST_F( ServerAccountsTest, AddsTheLastTransfersOfAnObjectsChips ) {
   SmbusControl::Response response;
   response.set_seconds( 30 );
   for ( int second = 1; second <= 20; ++second ) {
      SmbusControl::Transfer &passed = *response.add_passed();
      passed.set_seconds( second );
      passed.set_bus( "scd(4):1:2" );
      passed.set_segment( second == 20 ? "0x70=2" : "0x70=1" ); // of another segment
      passed.set_address( second == 19 ? 0x49 : 0x48 );         // of another chip
      passed.set_operation( "read" );
      passed.set_read( "\x1A" + std::string( 1, '\0' ) );
   }
   for ( const char *path : { "0x70=1", "0x70=2" } ) {
      SmbusControl::Quarantined &alone = *response.add_quarantined();
      alone.set_bus( "scd(4):1:2" );
      alone.set_path( path );
      alone.set_reason( "timed out" );
      alone.set_seconds( 12 );
      alone.set_next( 3.5 );
   }
   answerWith( Sockets::framed( response ) );
   std::optional<Why> why;
   ServerAccounts( loop_, path_ )
      .addTransfers( { .chips = { { "scd(4):1:2", "0x70=1", 0x48 } } },
                     [&]( const Why &known ) { why = known; } );
   while ( !why )
      loop_.run_one();
   EXPECT_EQ( why->whyNoTransfers, "" );
   ASSERT_EQ( why->transfers.size(), 8u );
   EXPECT_EQ( why->transfers.front().age, 19 );
   EXPECT_EQ( why->transfers.back().age, 12 );
   EXPECT_EQ( why->transfers.back().data, "1a 00" );
   EXPECT_THAT( why->leftAlone,
                ElementsAre( "scd(4):1:2: the segment 0x70=1 is quarantined for 12 s (timed out), "
                             "next try in 4 s" ) );
}

TEST_F( ServerAccountsTest, SaysWhyThereAreNoTransfers ) {
   std::optional<Why> why;
   ServerAccounts( loop_, path_ )
      .addTransfers( { .chips = { { "scd(4):1:2", "", 0x48 } } },
                     [&]( const Why &known ) { why = known; } );
   while ( !why )
      loop_.run_one();
   EXPECT_THAT( why->whyNoTransfers, HasSubstr( path_ + ".control" ) );
   EXPECT_TRUE( why->transfers.empty() );
}

TEST_F( ServerAccountsTest, GivesWhatTheServerKnowsOfFailures ) {
   SmbusControl::Response response;
   SmbusControl::BusLoad &bus = *response.add_bus();
   bus.set_bus( "scd(4):1:2" );
   bus.set_held( "0x70=1" );
   SmbusControl::Quarantined &alone = *bus.add_quarantined();
   alone.set_path( "0x70=2" );
   alone.set_whole_bus( true );
   bus.add_segment()->add_chip()->set_address( 0x70 );
   SmbusControl::Segment &behind = *bus.add_segment();
   behind.set_path( "0x70=1" );
   SmbusControl::ChipLoad &chip = *behind.add_chip();
   chip.set_address( 0x48 );
   chip.mutable_totals()->set_transfers( 7 );
   chip.set_failures_in_a_row( 3 );
   chip.set_last_failure( SmbusControl::ChipLoad::HELD_LOW );
   response.add_bus()->set_bus( "i2c:0" );
   answerWith( Sockets::framed( response ) );
   Health::Evidence evidence;
   bool answered = false;
   ServerAccounts( loop_, path_ ).askEvidence( [&]( Health::Evidence known, std::string error ) {
      EXPECT_EQ( error, "" );
      evidence = std::move( known );
      answered = true;
   } );
   while ( !answered )
      loop_.run_one();
   ASSERT_EQ( evidence.size(), 2u );
   EXPECT_EQ( evidence[0].bus, "scd(4):1:2" );
   EXPECT_TRUE( evidence[0].isHeld );
   EXPECT_EQ( evidence[0].heldPath, "0x70=1" );
   ASSERT_EQ( evidence[0].quarantined.size(), 1u );
   EXPECT_EQ( evidence[0].quarantined[0].path, "0x70=2" );
   EXPECT_TRUE( evidence[0].quarantined[0].isWholeBus );
   ASSERT_EQ( evidence[0].chips.size(), 2u );
   EXPECT_EQ( evidence[0].chips[0].path, "" );
   EXPECT_EQ( evidence[0].chips[0].failuresInARow, 0u );
   EXPECT_EQ( evidence[0].chips[1].path, "0x70=1" );
   EXPECT_EQ( evidence[0].chips[1].address, 0x48u );
   EXPECT_EQ( evidence[0].chips[1].transfers, 7u );
   EXPECT_EQ( evidence[0].chips[1].failuresInARow, 3u );
   EXPECT_EQ( evidence[0].chips[1].last, Health::BusFault::HeldLow );
   EXPECT_FALSE( evidence[1].isHeld );
}

TEST_F( ServerAccountsTest, EachKindOfFailureIsOneOfTheEvidence ) {
   using Load = SmbusControl::ChipLoad;
   using enum Health::BusFault;
   for ( const auto &[failure, fault] :
         { std::pair( Load::NO_ACKNOWLEDGE, NoAcknowledge ), std::pair( Load::PEC, Pec ),
           std::pair( Load::TIMEOUT, Timeout ), std::pair( Load::HELD_LOW, HeldLow ),
           std::pair( Load::OTHER, Other ) } ) {
      SmbusControl::Response response;
      response.add_bus()->add_segment()->add_chip()->set_last_failure( failure );
      EXPECT_EQ( evidenceOf( response ).at( 0 ).chips.at( 0 ).last, fault ) << failure;
   }
}

TEST_F( ServerAccountsTest, SaysWhyTheFailuresAreNotKnown ) {
   std::string why;
   ServerAccounts( loop_, "" ).askEvidence( [&]( Health::Evidence, std::string error ) {
      why = std::move( error );
   } );
   EXPECT_EQ( why, "the plug-in's data does not name its server's socket" );
}

TEST_F( ServerAccountsTest, SaysWhyItCanNotBeAsked ) {
   ask();
   EXPECT_EQ( error_, path_ + ".control: there is no such socket; is its server running?" );
}

TEST_F( ServerAccountsTest, TellsWhatTheServerRefuses ) {
   SmbusControl::Response response;
   response.set_error( "too many clients" );
   answerWith( Sockets::framed( response ) );
   ask();
   EXPECT_EQ( error_, path_ + ".control: too many clients" );
}

TEST_F( ServerAccountsTest, RefusesWhatIsNoAnswer ) {
   answerWith( "\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff" );
   ask();
   EXPECT_EQ( error_, path_ + ".control: the answer is not valid" );
}

TEST_F( ServerAccountsTest, WaitsForNoSilentServer ) {
   listen();
   ask( std::chrono::milliseconds( 20 ) );
   EXPECT_EQ( error_, path_ + ".control: no answer in time" );
}

TEST_F( ServerAccountsTest, AnUnknownOrImpossibleSocketIsTold ) {
   boost::asio::io_context loop( 1 );
   std::string unknown, impossible;
   ServerAccounts( loop, "" ).ask( [&]( std::string, std::string error ) { unknown = error; } );
   ServerAccounts( loop, std::string( 200, 'x' ) ).ask( [&]( std::string, std::string error ) {
      impossible = error;
   } );
   EXPECT_EQ( unknown, "the plug-in's data does not name its server's socket" );
   EXPECT_THAT( impossible, HasSubstr( "File name too long" ) );
}

} // namespace
} // namespace Host
