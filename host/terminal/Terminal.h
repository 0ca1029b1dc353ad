#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <functional>
#include <optional>
#include <string>
#include <termios.h>
#include <vector>

namespace Host {

// The terminal as a full-screen program has it: a screen of its own, keys without line editing.
// Everything is as before once this is gone.
class Terminal {
 public:
   // Whether standard output is one.
   static bool isAvailable();

   // `key` hears of every key pressed.
   Terminal( boost::asio::io_context &loop, std::function<void( char )> key );
   ~Terminal();
   Terminal( const Terminal & ) = delete;
   Terminal &operator=( const Terminal & ) = delete;

   // Draws lines in place of those that were there, as many as the terminal has room for.
   void draw( const std::vector<std::string> &lines ) const;

 private:
   void readKeys();

   std::function<void( char )> key_;
   boost::asio::posix::stream_descriptor keyboard_;
   std::optional<termios> before_{};
   char pressed_ = 0;
};

} // namespace Host
