#include "host/serve/LastLoads.h"

#include "PrivateFolder.h"
#include "smbus/Control.pb.h"

#include <boost/asio.hpp>
#include <gtest/gtest.h>
#include <sockets/Frames.h>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;
using namespace std::chrono_literals;

// The test is the server, and answers when it likes.
class LastLoadsTest : public ::testing::Test {
 protected:
   LastLoadsTest() { accept(); }

   void accept() {
      acceptor_.async_accept( [this]( const auto &, stream_protocol::socket socket ) {
         clients_.push_back( std::move( socket ) );
         if ( answersAtOnce_ )
            answer();
         accept();
      } );
   }
   void answer() {
      SmbusControl::Response response;
      response.set_seconds( ++answers_ );
      boost::asio::write( clients_.back(), boost::asio::buffer( Sockets::framed( response ) ) );
   }
   // The "seconds" of the loads; 0 for none.
   double ask( LastLoads &loads ) {
      std::optional<double> told;
      loads.ask( [&]( const KnownLoads &known ) {
         EXPECT_FALSE( told );
         told = known.loads ? known.loads->seconds() : 0;
         age_ = known.age;
      } );
      while ( !told )
         loop_.run_one();
      return *told;
   }

   const TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "smbus.sock" );
   boost::asio::io_context loop_{ 1 };
   stream_protocol::acceptor acceptor_{ loop_, stream_protocol::endpoint( path_ + ".control" ) };
   std::vector<stream_protocol::socket> clients_;
   const ServerAccounts accounts_{ loop_, path_, 10s };
   bool answersAtOnce_ = true;
   int answers_ = 0;
   double age_ = 0;
};

TEST_F( LastLoadsTest, GivesWhatTheServerAnswersInTime ) {
   LastLoads loads( loop_, accounts_, 10s );
   EXPECT_EQ( ask( loads ), 1 );
   EXPECT_LT( age_, 5 );
   EXPECT_EQ( ask( loads ), 2 );
}

TEST_F( LastLoadsTest, GivesWhatIsKnownWhereTheServerTakesTooLong ) {
   LastLoads loads( loop_, accounts_, 20ms );
   while ( ask( loads ) == 0 ) // this machine may be slow
      ;
   answersAtOnce_ = false;
   const double last = answers_;
   EXPECT_EQ( ask( loads ), last );
   EXPECT_GE( age_, 0.02 );
   // It is asked once, and what it answers later counts for the next time.
   EXPECT_EQ( ask( loads ), last );
   const size_t asked = clients_.size();
   answer();
   while ( ask( loads ) == last )
      ;
   EXPECT_LE( clients_.size(), asked + 1 );
}

TEST_F( LastLoadsTest, AllWhoWaitGetTheSameAnswer ) {
   LastLoads loads( loop_, accounts_, 10s );
   int told = 0;
   for ( int i = 0; i < 3; ++i )
      loads.ask( [&]( const KnownLoads &known ) { told += known.loads->seconds() == 1; } );
   while ( told < 3 )
      loop_.run_one();
   EXPECT_EQ( clients_.size(), 1u );
}

TEST_F( LastLoadsTest, KnowsNothingOfAServerThatIsNotThere ) {
   const ServerAccounts nobody( loop_, folder_.file( "none.sock" ), 10s );
   LastLoads loads( loop_, nobody, 10s );
   EXPECT_EQ( ask( loads ), 0 );
}

} // namespace
} // namespace Host
