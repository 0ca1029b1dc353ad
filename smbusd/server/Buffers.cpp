#include "smbusd/server/Buffers.h"

#include <fmt/format.h>

#include <malloc.h>

namespace Smbusd {

void Buffers::take( size_t bytes, size_t wanted ) {
   size_t used = used_;
   do {
      if ( bytes > shared_ - used )
         throw BuffersFull(
            fmt::format( "a frame needs {} bytes, but {} of the {} for large frames are in use; "
                         "send less at once, or try again later",
                         wanted, used, shared_ ) );
   } while ( !used_.compare_exchange_weak( used, used + bytes ) );
}

void Buffers::giveBack( size_t bytes ) {
   if ( used_.fetch_sub( bytes ) == bytes )
      malloc_trim( 0 ); // what was freed piece by piece would stay with the process
}

void Buffers::Part::holds( size_t bytes ) {
   const size_t wanted = bytes > ownBytes ? bytes : 0;
   if ( wanted > held_ )
      buffers_.take( wanted - held_, wanted );
   else if ( wanted < held_ )
      buffers_.giveBack( held_ - wanted );
   held_ = wanted;
}

} // namespace Smbusd
