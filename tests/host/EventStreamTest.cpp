// The stream of events of a server on a socket of the test.
#include "PrivateFolder.h"
#include "host/serve/Events.h"
#include "host/serve/EventsClient.h"
#include "support/ApiServer.h"

#include <boost/asio.hpp>
#include <fmt/format.h>
#include <gmock/gmock.h>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class EventStreamTest : public ::testing::Test {
 protected:
   void serve( Http::Limits limits = {} ) { server_.emplace( loop_, path_, api_, limits ); }
   void add( const std::string &cause ) { events_.add( { { .cause = cause } } ); }

   // A client of the stream, whose reading the test begins.
   class Hearer {
    public:
      Hearer( EventStreamTest &test, const std::string &headers = "",
              const std::string &query = "" )
         : loop_( test.loop_ ), socket_( test.loop_ ) {
         socket_.connect( test.path_.string() );
         boost::asio::write( socket_, boost::asio::buffer( "GET /v1/events" + query +
                                                           " HTTP/1.1\r\nHost: x\r\n"
                                                           "Accept: text/event-stream\r\n" +
                                                           headers + "\r\n" ) );
      }
      // Whether these words come.
      bool hears( const std::string &words ) {
         if ( !isReading_ )
            read();
         const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
         while ( text_.find( words ) == std::string::npos && !hasEnded_ &&
                 std::chrono::steady_clock::now() < end )
            loop_.run_one_for( std::chrono::seconds( 1 ) );
         return text_.find( words ) != std::string::npos;
      }
      const std::string &text() const { return text_; }
      void close() { socket_.close(); }
      bool hasEnded() const { return hasEnded_; }

    private:
      void read() {
         isReading_ = true;
         socket_.async_read_some( boost::asio::buffer( chunk_ ),
                                  [this]( const auto &failure, size_t count ) {
                                     text_.append( chunk_.data(), count );
                                     hasEnded_ = static_cast<bool>( failure );
                                     if ( !failure )
                                        read();
                                  } );
      }

      boost::asio::io_context &loop_;
      stream_protocol::socket socket_;
      std::array<char, 4096> chunk_{};
      std::string text_{};
      bool isReading_ = false;
      bool hasEnded_ = false;
   };

   const TestSupport::PrivateFolder folder_;
   const std::filesystem::path path_ = folder_.path() / "host.sock";
   boost::asio::io_context loop_{ 1 };
   const BoardFiles::Board board_{
      .topology = "[]", .objects = { { .kind = BoardFiles::Kind::Led, .name = "led" } }
   };
   Events events_{ folder_.path() / "host.events", []( const auto & ) { return true; } };
   const Api api_{
      board_,
      "b",
      { .report = [] { return BoardReport{}; }, .ask = {}, .busses = {}, .events = &events_ }
   };
   std::optional<ApiServer> server_;
};

TEST_F( EventStreamTest, GivesEventsAsTheyCome ) {
   serve();
   add( "old" );
   Hearer hearer( *this );
   EXPECT_TRUE( hearer.hears( "\r\n\r\n" ) );
   EXPECT_THAT( hearer.text(), HasSubstr( "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n"
                                          "Cache-Control: no-cache\r\n" ) );
   add( "new" );
   EXPECT_TRUE( hearer.hears( "\"words\":\"\"}\n\n" ) );
   EXPECT_THAT( hearer.text(),
                HasSubstr( "\r\n\r\nid: 2\nevent: set\ndata: {\"id\":2,\"time\":" ) );
   EXPECT_THAT( hearer.text(), Not( HasSubstr( "old" ) ) );
}

TEST_F( EventStreamTest, ContinuesBehindTheLastEventWithoutAGap ) {
   serve();
   std::vector<Health::Event> many( 350, Health::Event{ .cause = "many" } ); // in several pieces
   events_.add( many );
   Hearer hearer( *this, "Last-Event-ID: 5\r\n" );
   EXPECT_TRUE( hearer.hears( "id: 350\n" ) );
   add( "later" );
   EXPECT_TRUE( hearer.hears( "later" ) );
   size_t at = 0;
   for ( int id = 6; id <= 351 && at != std::string::npos; ++id )
      at = hearer.text().find( fmt::format( "id: {}\n", id ), at );
   EXPECT_NE( at, std::string::npos );
   EXPECT_THAT( hearer.text(), Not( HasSubstr( "id: 5\n" ) ) );
}

TEST_F( EventStreamTest, GivesOnlyEventsOfTheObject ) {
   serve();
   Hearer hearer( *this, "", "?object=led" );
   EXPECT_TRUE( hearer.hears( "\r\n\r\n" ) );
   add( "another" );
   events_.add( { { .cause = "led dark", .object = "led" } } );
   EXPECT_TRUE( hearer.hears( "led dark" ) );
   EXPECT_THAT( hearer.text(), Not( HasSubstr( "another" ) ) );
}

TEST_F( EventStreamTest, ACommentComesWhenNoEventDoes ) {
   serve( { .comment = std::chrono::milliseconds( 10 ) } );
   Hearer hearer( *this );
   EXPECT_TRUE( hearer.hears( ": no events\n\n: no events\n\n" ) );
   add( "later" );
   EXPECT_TRUE( hearer.hears( "later" ) );
}

TEST_F( EventStreamTest, StaysOpenLongerThanAConnectionWithoutARequest ) {
   serve( { .idle = std::chrono::milliseconds( 20 ) } );
   Hearer hearer( *this );
   EXPECT_TRUE( hearer.hears( "\r\n\r\n" ) );
   loop_.run_for( std::chrono::milliseconds( 60 ) );
   add( "later" );
   EXPECT_TRUE( hearer.hears( "later" ) );
}

TEST_F( EventStreamTest, AClientThatTakesNothingIsDropped ) {
   serve( { .idle = std::chrono::milliseconds( 20 ) } );
   std::vector<Health::Event> many( 2000, Health::Event{ .words = std::string( 1000, 'x' ) } );
   events_.add( many );
   Hearer hearer( *this, "Last-Event-ID: 0\r\n" );
   loop_.run_for( std::chrono::milliseconds( 200 ) );
   EXPECT_FALSE( hearer.hears( "id: 2000\n" ) );
   EXPECT_TRUE( hearer.hasEnded() );
}

TEST_F( EventStreamTest, CountsAsAConnectionUntilItsClientGoes ) {
   serve( { .connections = 1 } );
   Hearer first( *this );
   EXPECT_TRUE( first.hears( "\r\n\r\n" ) );
   Hearer second( *this );
   EXPECT_TRUE( second.hears( "HTTP/1.1 503" ) );
   first.close();
   loop_.run_for( std::chrono::milliseconds( 20 ) );
   Hearer third( *this );
   EXPECT_TRUE( third.hears( "HTTP/1.1 200" ) );
}

TEST_F( EventStreamTest, IsFollowedFromOneServerToTheNext ) {
   serve();
   add( "first" );
   std::vector<std::string> heard;
   std::vector<std::string> lost;
   const FollowedEvents followed(
      loop_, path_, "", 0,
      { .heard = [&]( const Health::Event &event ) { heard.push_back( event.cause ); },
        .lost = [&]( const std::string &why ) { lost.push_back( why ); } } );
   const auto run = [&]( auto until ) {
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
      while ( !until() && std::chrono::steady_clock::now() < end )
         loop_.run_one_for( std::chrono::milliseconds( 100 ) );
   };
   run( [&] { return heard.size() == 1; } );
   add( "second" );
   run( [&] { return heard.size() == 2; } );
   EXPECT_THAT( heard, ElementsAre( "first", "second" ) );
   EXPECT_THAT( lost, ElementsAre() );
}

} // namespace
} // namespace Host
