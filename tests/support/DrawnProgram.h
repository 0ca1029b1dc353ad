#pragma once

#include "DrawnScreen.h"
#include "StartedProgram.h"

#include <functional>
#include <string>
#include <vector>

namespace TestSupport {

// A program on a terminal of its own, and what that shows.
class DrawnProgram {
 public:
   // The program's path first. "NAME=value" for its environment; else it is a terminal
   // with colours and UTF-8.
   DrawnProgram( const std::vector<std::string> &command, std::vector<std::string> environment,
                 size_t columns = 80, size_t rows = 24 );

   // Waits until the screen has this text, and returns the screen. A test fails without it.
   std::string waitFor( const std::string &text );
   // The same, until all of it is this one, once `changed` has made it comparable.
   std::string waitForScreen( const std::string &wanted,
                              std::string ( *changed )( const std::string & ) );
   // The same, until it is gone.
   std::string waitUntilGone( const std::string &text );
   void type( const std::string &keys ) const { program_.type( keys ); }
   void resize( size_t columns, size_t rows );

   DrawnScreen &screen() { return screen_; }
   StartedProgram &program() { return program_; }
   // All that was written so far.
   const std::string &bytes() const { return bytes_; }
   // Reads until the program has ended. Returns its exit code.
   int wait();

 private:
   std::string readUntil( const std::function<bool()> &reached, const std::string &what );
   bool readSome();

   StartedProgram program_;
   DrawnScreen screen_;
   std::string bytes_{};
};

} // namespace TestSupport
