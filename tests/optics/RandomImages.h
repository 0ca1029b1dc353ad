// Images of random bytes, and of modules with a few bytes changed, with random parts that were
// read.
#pragma once

#include "optics/Decode.h"

#include <random>

namespace OpticsTest {

struct RandomImage {
   Optics::Standard standard;
   Optics::Image some; // what was read of it
   Optics::Image all;
};

// The same for the same number, on every machine.
RandomImage randomImage( uint64_t number );

// A sentence for each thing that must not be, whatever the bytes are.
std::vector<std::string> wrongIn( const RandomImage &image );

} // namespace OpticsTest
