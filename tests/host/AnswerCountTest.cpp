// How often the child sends. Its socket keeps the borders of what is sent here, so that each piece
// can be counted.
#include "PrivateFolder.h"
#include "host/plugin/Child.h"
#include "host/plugin/FrameBuffer.h"
#include "host/plugin/Messages.h"
#include "host/plugin/SharedPage.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Host {
namespace {

class AnswerCountTest : public ::testing::Test {
 protected:
   AnswerCountTest() {
      ::setenv( "SCRIPT", folder_.path().c_str(), 1 );
      std::array<int, 2> ends{};
      EXPECT_EQ( ::socketpair( AF_UNIX, SOCK_SEQPACKET, 0, ends.data() ), 0 );
      socket_ = ends[0];
      const int limit = 10; // seconds
      const timeval longest{ .tv_sec = limit, .tv_usec = 0 };
      ::setsockopt( socket_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest );
      const int errors = ::open( folder_.file( "errors" ).c_str(), O_WRONLY | O_CREAT, 0600 );
      child_ = ::fork();
      if ( child_ == 0 ) {
         ::dup2( errors, STDERR_FILENO );
         ::dup2( page_.descriptor(), 101 ); // out of the way of the two numbers
         ::dup2( ends[1], childSocket );
         ::dup2( 101, childPage );
         ::closefrom( childPage + 1 );
         ::execl( "/proc/self/exe", "host_tests", "child", nullptr );
         ::_exit( 127 );
      }
      ::close( ends[1] );
      ::close( errors );
      EXPECT_EQ( answerTo( LoadCommand{ SCRIPTED_PLUGIN, "[]", traces_ } ).size(), 1u );
   }
   ~AnswerCountTest() override {
      ::close( socket_ );
      ::waitpid( child_, nullptr, 0 );
   }

   void send( const Command &command ) const {
      const std::string bytes = encode( command );
      EXPECT_EQ( ::send( socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL ), std::ssize( bytes ) );
   }
   // What the child sends until the command's end: the events of each piece.
   std::vector<std::vector<Event>> answerTo( const Command &command ) const {
      send( command );
      std::vector<std::vector<Event>> pieces;
      do
         pieces.push_back( nextPiece() );
      while ( !pieces.back().empty() && !std::holds_alternative<Done>( pieces.back().back() ) );
      return pieces;
   }
   // Nothing when the child has ended.
   std::vector<Event> nextPiece() const {
      std::array<char, 100000> bytes{};
      const ssize_t length = ::recv( socket_, bytes.data(), bytes.size(), 0 );
      FrameBuffer frames;
      frames.append( { bytes.data(), static_cast<size_t>( std::max<ssize_t>( length, 0 ) ) } );
      std::vector<Event> events;
      while ( const auto message = frames.next() )
         events.push_back( decodeEvent( *message ).value() );
      EXPECT_FALSE( frames.hasRest() );
      return events;
   }
   void bringUp( BoardFiles::Kind kind, size_t count ) const {
      EXPECT_EQ( answerTo( InitCommand{ kind } ).size(), 1u );
      for ( size_t i = 0; i < count; ++i )
         EXPECT_EQ( answerTo( AddCommand{ i,
                                          { .kind = kind,
                                            .name = "x",
                                            .text = R"({ "driverArgs": { "script": "x" } })" } } )
                       .size(),
                    1u );
   }

   const TraceFilter traces_{ -1, { "execute: " } };
   const TestSupport::PrivateFolder folder_;
   const SharedPage page_;
   int socket_ = -1;
   pid_t child_ = -1;
};

TEST_F( AnswerCountTest, AReadingOfSevenValuesWithTracesIsOneMessage ) {
   bringUp( BoardFiles::Kind::Psu, 1 );
   folder_.write( "x.input_current", "status 6 execute: gone" );
   const auto pieces = answerTo( ReadCommand{ { 0 } } );
   ASSERT_EQ( pieces.size(), 1u );
   ASSERT_EQ( pieces[0].size(), 1 + 7 + 1u );
   EXPECT_EQ( std::get<Trace>( pieces[0][1] ).text, "execute: gone" ); // in front of its reading
   EXPECT_EQ( std::get<Reading>( pieces[0][2] ).name, "input_current" );
}

TEST_F( AnswerCountTest, AReadingOfManyObjectsIsOneMessageWithAnEndForEach ) {
   bringUp( BoardFiles::Kind::Psu, 3 );
   const auto pieces = answerTo( ReadCommand{ { 2, 0, 1 } } );
   ASSERT_EQ( pieces.size(), 1u );
   const auto isEnd = []( const Event &event ) { return std::holds_alternative<Done>( event ); };
   EXPECT_EQ( std::ranges::count_if( pieces[0], isEnd ), 3 );
   EXPECT_EQ( pieces[0].size(), 3 * ( 7 + 1u ) );
}

TEST_F( AnswerCountTest, WhatWasReadLongAgoIsSentBeforeTheNextOperationBegins ) {
   bringUp( BoardFiles::Kind::Psu, 1 );
   folder_.write( "x.power_ok", "until long" );
   folder_.write( "x.input_current", "until heard" );
   send( ReadCommand{ { 0 } } );
   std::this_thread::sleep_for( std::chrono::milliseconds( 110 ) ); // the child has its own clock
   folder_.write( "long", "" );
   const std::vector<Event> first = nextPiece();
   ASSERT_EQ( first.size(), 1u );
   EXPECT_EQ( std::get<Reading>( first[0] ).name, "power_ok" );
   folder_.write( "heard", "" );
   EXPECT_TRUE( std::holds_alternative<Done>( nextPiece().back() ) );
}

TEST_F( AnswerCountTest, AnActionIsOneMessage ) {
   bringUp( BoardFiles::Kind::Fan, 1 );
   EXPECT_EQ( answerTo( ActCommand{ 0, { "set_rpm", { 4200 } } } ).size(), 1u );
}

TEST_F( AnswerCountTest, AnAnswerThatIsTooLongForThePageArrivesWhole ) {
   bringUp( BoardFiles::Kind::Psu, 1 );
   const std::string text = "execute: " + std::string( 30000, 'x' );
   for ( const char *value : { "power_ok", "input_current", "output_voltage" } )
      folder_.write( std::string( "x." ) + value, "status 6 " + text );
   size_t traces = 0, readings = 0;
   for ( const auto &piece : answerTo( ReadCommand{ { 0 } } ) )
      for ( const Event &event : piece ) {
         readings += std::holds_alternative<Reading>( event );
         if ( const auto *trace = std::get_if<Trace>( &event ) )
            traces += trace->text == text;
      }
   EXPECT_EQ( traces, 3u );
   EXPECT_EQ( readings, 7u );
}

} // namespace
} // namespace Host
