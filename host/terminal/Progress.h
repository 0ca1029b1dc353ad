#pragma once

#include <cstddef>
#include <string>

namespace Host {

// Tells on standard error how far a board is brought up: a bar on a terminal, plain lines
// elsewhere.
class Progress {
 public:
   Progress();
   // Leaves the terminal's line empty.
   ~Progress();
   Progress( const Progress & ) = delete;
   Progress &operator=( const Progress & ) = delete;

   // `settled` of `all` objects were brought up or failed to be; `operation` runs now.
   void update( size_t settled, size_t all, const std::string &operation );

 private:
   bool terminal_;
   size_t told_ = 0;
};

} // namespace Host
