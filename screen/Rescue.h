#pragma once

#include <string>
#include <sys/types.h>
#include <termios.h>

namespace Screen {

// Puts a terminal back as it was where this program can't do it in the usual way any more: it
// crashes, or is killed by a signal that no program can catch. For the latter a small process waits
// for this one's end. Only one at a time.
class Rescue {
 public:
   // `before` was set when the terminal was still as it has to be again; `leave` are the bytes that
   // leave the full-screen mode. Other processes than this one's children may have the terminal.
   Rescue( int terminal, const termios &before, const std::string &leave );
   // Nothing is left to do: the terminal is as it was.
   ~Rescue();
   Rescue( const Rescue & ) = delete;
   Rescue &operator=( const Rescue & ) = delete;

 private:
   pid_t waiting_ = -1;
};

} // namespace Screen
