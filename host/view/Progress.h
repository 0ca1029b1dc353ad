#ifndef ORBIS_HOST_VIEW_PROGRESS_H
#define ORBIS_HOST_VIEW_PROGRESS_H

#include <cstddef>
#include <string>

namespace Host {

/// Tells on standard error how far a board is brought up: a bar on a terminal, plain lines
/// elsewhere.
class Progress {
 public:
   Progress();
   /// Leaves the terminal's line empty.
   ~Progress();
   Progress( const Progress & ) = delete;
   Progress &operator=( const Progress & ) = delete;

   /// `settled` of `all` objects were brought up or failed to be; `inHand` is what goes on.
   void update( std::size_t settled, std::size_t all, const std::string &inHand );

 private:
   bool terminal_;
   std::size_t told_ = 0;
};

} // namespace Host

#endif
