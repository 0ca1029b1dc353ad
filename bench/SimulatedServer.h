// A server on a simulated bus with one thermometer, and one more behind a mux.
#pragma once

#include "ChildProcess.h"

#include "OrbisGeneric/Ham/OrbisSmbusHam.h"

#include <string>

class SimulatedServer {
 public:
   // Starts it and connects the plug-in.
   SimulatedServer();
   ~SimulatedServer();

   // The access method for a device of the topology: 1 is at 72, 2 at 73 behind the mux.
   Ham::OrbisSmbusHam &ham( unsigned did, unsigned address );
   pid_t process() const { return process_.id(); }

   // The one server of the program.
   static SimulatedServer &running();

 private:
   void run();

   const std::string folder_;
   ChildProcess process_;
};
