// Five ways to read the temperatures of the same chips. Two only ask the kernel's drivers.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace RealTest {

// LM75 chips of one adapter, to which the kernel's lm75 is bound.
struct Thermometers {
   unsigned adapter = 0;
   std::vector<uint8_t> addresses{};
   std::vector<std::string> inputs{}; // temp1_input of each

   // A list of readings goes through the chips in turn.
   size_t chip( size_t reading ) const { return reading % addresses.size(); }
};

class Peer {
 public:
   explicit Peer( Thermometers thermometers ) : thermometers_( std::move( thermometers ) ) {}
   virtual ~Peer() = default;
   Peer( const Peer & ) = delete;
   Peer &operator=( const Peer & ) = delete;

   // Reads as many as there is room for, of the chips in turn. A value that can't be read is not a
   // number.
   virtual void read( std::span<double> celsius ) = 0;

 protected:
   const Thermometers thermometers_;
};

// Holds /dev/i2c-N open and reads a word of each chip with libi2c.
std::unique_ptr<Peer> makeHolder( const Thermometers &thermometers );
// Starts i2cget for each reading.
std::unique_ptr<Peer> makeI2cGet( const Thermometers &thermometers );
// Opens, reads and closes temp1_input of the kernel's lm75.
std::unique_ptr<Peer> makeHwmon( const Thermometers &thermometers );
// Starts sensors once for all readings.
std::unique_ptr<Peer> makeSensors( const Thermometers &thermometers );
// Starts a server on the adapter, and calls the plug-in, which asks it. An object for each reading,
// at most 25. Not twice in a process, since the plug-in reads its topology only once.
std::unique_ptr<Peer> makePlugin( const Thermometers &thermometers );

} // namespace RealTest
