#pragma once

#include "host/commands/WatchSource.h"
#include "host/terminal/WatchView.h"
#include "screen/Terminal.h"

#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

namespace Host {

// The full screen of watch: keys, the terminal's size and what is new of the board, on the loop of
// the session.
class WatchScreen {
 public:
   WatchScreen( const BoardFiles::Board &board, const Options &options, CommandSession &session );

   // What is known of the board may have changed.
   void refresh() { source_.refresh( view_.object() ); }

 private:
   void draw();
   void readKeys();
   void pressed();
   void hearSignals();
   void tick();

   CommandSession &session_;
   WatchView view_{};
   WatchSource source_;
   // Before the terminal: where nobody hears these signals, ncurses does.
   boost::asio::signal_set signals_;
   Screen::Terminal terminal_{};
   boost::asio::posix::stream_descriptor keyboard_;
   boost::asio::steady_timer ticks_;
};

} // namespace Host
