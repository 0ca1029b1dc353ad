#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <functional>
#include <optional>
#include <string>
#include <termios.h>
#include <vector>

namespace Host {

// The terminal in full-screen mode: its alternate screen, and every key at once. The destructor
// restores the terminal.
class Terminal {
 public:
   // Whether standard output is a terminal.
   static bool isAvailable();

   // The width of standard output, where it is a terminal.
   static std::optional<size_t> columns();

   // Calls `key` for every key that is pressed.
   Terminal( boost::asio::io_context &loop, std::function<void( char )> key );
   ~Terminal();
   Terminal( const Terminal & ) = delete;
   Terminal &operator=( const Terminal & ) = delete;

   // Draws these lines in place of the last ones. Lines that don't fit on the screen are left out.
   void draw( const std::vector<std::string> &lines ) const;

 private:
   void readKeys();

   std::function<void( char )> key_;
   boost::asio::posix::stream_descriptor keyboard_;
   std::optional<termios> before_{};
   char pressed_ = 0;
};

} // namespace Host
