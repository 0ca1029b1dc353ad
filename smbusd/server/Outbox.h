#pragma once

#include <cstddef>
#include <mutex>
#include <string>

namespace Smbusd {

// Frames that other threads have for a client. Thread-safe.
class Outbox {
 public:
   static constexpr size_t maxBytes = 256u << 10;

   Outbox();
   ~Outbox();
   Outbox( const Outbox & ) = delete;
   Outbox &operator=( const Outbox & ) = delete;

   // Never waits. Returns false, and drops the frame, when the client was too slow for those
   // before.
   bool add( const std::string &frame );
   // All frames, which are then out of the box.
   std::string take();
   // A descriptor that can be read while there are frames.
   int event() const { return event_; }

 private:
   const int event_;
   std::mutex mutex_;
   std::string frames_;
};

} // namespace Smbusd
