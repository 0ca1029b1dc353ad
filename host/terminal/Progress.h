#pragma once

#include <cstddef>
#include <string>

namespace Host {

// Shows on standard error how many objects are brought up: a bar on a terminal, else plain lines.
class Progress {
 public:
   Progress();
   // Clears the bar.
   ~Progress();
   Progress( const Progress & ) = delete;
   Progress &operator=( const Progress & ) = delete;

   // `settled` of `all` objects were brought up, or failed. `operation` runs now.
   void update( size_t settled, size_t all, const std::string &operation );

 private:
   bool terminal_;
   size_t printed_ = 0;
};

} // namespace Host
