// A server on eight simulated busses. On the first is a thermometer, and one more behind a mux; on
// each of the others a thermometer.
#pragma once

#include "ChildProcess.h"

#include "OrbisGeneric/Ham/OrbisSmbusHam.h"

#include <string>
#include <vector>

inline constexpr unsigned configuration = 1; // the only register of a thermometer with one byte

class SimulatedServer {
 public:
   // Starts it with further options.
   explicit SimulatedServer( std::vector<std::string> options = {} );
   ~SimulatedServer();

   pid_t process() const { return process_.id(); }
   std::string path() const { return folder_ + "/smbus.sock"; }

   // The server that the plug-in is connected to.
   static SimulatedServer &running();
   // The plug-in's access method for a device of the topology: 1 is at 72, 2 at 73 behind the mux.
   static Ham::OrbisSmbusHam &ham( unsigned did, unsigned address );

 private:
   void run();

   const std::vector<std::string> options_;
   const std::string folder_;
   ChildProcess process_;
};
