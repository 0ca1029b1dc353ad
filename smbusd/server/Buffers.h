// The memory for what the clients send and what they get.
#pragma once

#include <atomic>
#include <cstddef>
#include <stdexcept>

namespace Smbusd {

// There is no memory for a frame; the text says how much is in use.
struct BuffersFull : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// What the connections share. Memory that is not used any more goes back to the system.
// Thread-safe.
class Buffers {
 public:
   // Every connection has these bytes for itself beside the shared ones, so that a usual request
   // always finds room.
   static constexpr size_t ownBytes = 128u << 10;

   // A frame, or the message in it, of up to so many bytes leaves its memory to the next one.
   static constexpr size_t keptBytes = 64u << 10;

   explicit Buffers( size_t shared ) : shared_( shared ) {}
   size_t used() const { return used_; }

   // The part of one connection, which gives it back at its end. For one thread.
   class Part {
    public:
      explicit Part( Buffers &buffers ) : buffers_( buffers ) {}
      ~Part() { holds( 0 ); }
      Part( const Part & ) = delete;
      Part &operator=( const Part & ) = delete;

      // The connection needs room for these bytes, all together. Ask before you allocate more, and
      // tell after you have freed some. Throws BuffersFull, and holds what it held.
      void holds( size_t bytes );

    private:
      Buffers &buffers_;
      size_t held_ = 0;
   };

 private:
   void take( size_t bytes, size_t wanted );
   void giveBack( size_t bytes );

   const size_t shared_;
   std::atomic<size_t> used_ = 0;
};

} // namespace Smbusd
