#include "host/serve/ServerAccounts.h"

#include "PrivateFolder.h"
#include "smbus/Control.pb.h"

#include <boost/asio.hpp>
#include <gmock/gmock.h>
#include <sockets/Frames.h>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;
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
