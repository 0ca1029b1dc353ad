#pragma once

#include "smbus/RootBusId.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Smbusd {

enum ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

// What the user asks for.
struct Options {
   std::string socket = "/run/orbis/smbus.sock";
   std::string control;    // empty: the socket's path with .control after its name
   std::string readSocket; // empty: with .read after its name
   std::string group;
   std::string readGroup;    // empty: the same
   std::string controlGroup; // empty: group, where there is a readGroup
   std::string writePolicy;
   std::string topology; // of the simulated board, as its simulation
   std::string simulation;
   std::string routes;
   std::string recordTo;
   std::optional<uint64_t> recordKeep; // bytes
   std::string replayFrom;
   std::vector<Bus::RootBusId> exported; // as adapters of this machine
   bool asSlow = false;                  // as the recording
   std::string logLevel = "info";
   unsigned transactionLimit = 2000; // ms
   unsigned clientsPerProcess = 16;
   double speed = 1;      // of the simulation
   bool wireTime = false; // its transfers take as long as on real wires

   std::string routesToCheck; // empty: serve
   std::string policyToCheck; // the same
   bool elsewhere = false;    // they are another machine's
};

// Fills the options. When there is nothing more to do, prints the help, the version or what is
// wrong, and returns the exit code.
std::optional<ExitCode> parseCommandLine( int argc, char **argv, Options & );

} // namespace Smbusd
