// Bytes sent and returned between two processes over a Unix socket: what a reading is measured
// against.
#pragma once

#include "ChildProcess.h"

#include <memory>
#include <vector>

class PingPong {
 public:
   // The number of bytes there and back.
   PingPong( size_t ping, size_t pong );
   ~PingPong();

   void exchange();
   pid_t process() const { return echo_->id(); }

 private:
   std::vector<char> ping_, pong_;
   int ends_[2];
   std::unique_ptr<ChildProcess> echo_;
};
