#include "DrawnProgram.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace TestSupport {

namespace {

ProgramSettings settings( std::vector<std::string> environment, size_t columns, size_t rows ) {
   for ( const std::string usual : { "TERM=xterm-256color", "LC_ALL=C.UTF-8", "TZ=UTC" } ) {
      const std::string name = usual.substr( 0, usual.find( '=' ) + 1 );
      if ( std::none_of( environment.begin(), environment.end(),
                         [&name]( const auto &one ) { return one.starts_with( name ); } ) )
         environment.push_back( usual );
   }
   return { .onTerminal = true, .columns = columns, .rows = rows, .environment = environment };
}

} // namespace

DrawnProgram::DrawnProgram( const std::vector<std::string> &command,
                            std::vector<std::string> environment, size_t columns, size_t rows )
   : program_( command, settings( std::move( environment ), columns, rows ) ),
     screen_( columns, rows ) {}

bool DrawnProgram::readSome() {
   pollfd terminal{ program_.terminal(), POLLIN, 0 };
   if ( poll( &terminal, 1, 100 ) != 1 )
      return true;
   char chunk[4096];
   const ssize_t count = read( program_.terminal(), chunk, sizeof chunk );
   if ( count <= 0 )
      return false;
   bytes_.append( chunk, static_cast<size_t>( count ) );
   screen_.feed( { chunk, static_cast<size_t>( count ) } );
   return true;
}

std::string DrawnProgram::readUntil( const std::function<bool()> &reached,
                                     const std::string &what ) {
   const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
   while ( !reached() && std::chrono::steady_clock::now() < end && readSome() ) {
   }
   EXPECT_TRUE( reached() ) << what << ", but the screen has\n" << screen_.text();
   return screen_.text();
}

std::string DrawnProgram::waitFor( const std::string &text ) {
   return readUntil( [&] { return screen_.text().find( text ) != std::string::npos; },
                     "\"" + text + "\" has to come" );
}

std::string DrawnProgram::waitForScreen( const std::string &wanted,
                                         std::string ( *changed )( const std::string & ) ) {
   return readUntil( [&] { return changed( screen_.text() ) == wanted; }, wanted + "has to come" );
}

std::string DrawnProgram::waitUntilGone( const std::string &text ) {
   return readUntil( [&] { return screen_.text().find( text ) == std::string::npos; },
                     "\"" + text + "\" has to go" );
}

void DrawnProgram::resize( size_t columns, size_t rows ) {
   screen_.resize( columns, rows );
   const winsize size{ .ws_row = static_cast<unsigned short>( rows ),
                       .ws_col = static_cast<unsigned short>( columns ),
                       .ws_xpixel = 0,
                       .ws_ypixel = 0 };
   EXPECT_EQ( ioctl( program_.terminal(), TIOCSWINSZ, &size ), 0 );
}

int DrawnProgram::wait() {
   while ( readSome() ) {
   }
   return program_.wait();
}

} // namespace TestSupport
