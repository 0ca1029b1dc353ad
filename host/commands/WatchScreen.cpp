#include "host/commands/WatchScreen.h"

#include <csignal>
#include <poll.h>
#include <unistd.h>

namespace Host {

WatchScreen::WatchScreen( const BoardFiles::Board &board, const Options &options,
                          CommandSession &session )
   : session_( session ), source_( board, options, session, [this] { draw(); } ),
     signals_( session.loop(), SIGWINCH, SIGCONT, SIGTSTP ),
     keyboard_( session.loop(), ::dup( terminal_.keyboard() ) ), ticks_( session.loop() ) {
   hearSignals();
   readKeys();
   tick();
}

void WatchScreen::draw() {
   terminal_.draw( view_.draw( source_.snapshot(), terminal_.columns(), terminal_.rows() ) );
}

// Ages go on also while nothing new comes.
void WatchScreen::tick() {
   draw();
   ticks_.expires_after( std::chrono::seconds( 1 ) );
   ticks_.async_wait( [this]( const auto &failure ) {
      if ( !failure )
         tick();
   } );
}

void WatchScreen::readKeys() {
   keyboard_.async_wait( boost::asio::posix::stream_descriptor::wait_read,
                         [this]( const auto &failure ) {
                            if ( !failure )
                               pressed();
                         } );
}

void WatchScreen::pressed() {
   const std::string before = view_.object();
   bool isAny = false;
   while ( const auto press = terminal_.nextKey() ) {
      isAny = true;
      if ( !view_.press( *press, source_.snapshot(), terminal_.columns(), terminal_.rows() ) )
         return session_.stop();
   }
   pollfd keyboard{ terminal_.keyboard(), POLLIN, 0 };
   if ( !isAny && ::poll( &keyboard, 1, 0 ) == 1 && keyboard.revents & ( POLLHUP | POLLERR ) )
      return session_.stop(); // the terminal is gone
   if ( view_.object() != before )
      refresh();
   draw();
   readKeys();
}

void WatchScreen::hearSignals() {
   signals_.async_wait( [this]( const auto &failure, int signal ) {
      if ( failure )
         return;
      if ( signal == SIGTSTP )
         terminal_.suspend();
      draw();
      hearSignals();
   } );
}

} // namespace Host
