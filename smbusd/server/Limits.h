#pragma once

#include <chrono>
#include <cstddef>

namespace Smbusd {

// What the clients of one socket may use up.
struct Limits {
   size_t clients = 64;
   size_t clientsPerProcess = 16;
   std::chrono::milliseconds frameTime{ 5000 }; // from the first byte of a frame to its last
   std::chrono::milliseconds sendTime{ 5000 };  // for an answer
};

} // namespace Smbusd
