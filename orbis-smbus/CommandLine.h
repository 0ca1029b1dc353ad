#pragma once

#include "orbis-smbus/Target.h"
#include "smbus/Control.pb.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace SmbusClient {

enum ExitCode { Done = 0, TransferFailed = 1, WrongUsage = 2, NoServer = 3 };

// What the user asks for.
struct Options {
   std::string command; // read, write, dump, scan, sim, trace or top
   std::string socket;  // empty: the default
   bool json = false;
   unsigned retries = 0;
   Target target; // of a scan, only the bus and the multiplexers
   std::optional<uint32_t> offset;
   std::optional<Size> size;
   std::vector<uint32_t> values; // to write, and their bytes in the form that --size gives
   std::string data;
   std::string board;  // the folder of the board's files; empty: unknown
   bool yes = false;   // write without asking
   uint32_t first = 0; // to dump
   uint32_t last = 0xFF;
   std::string control;       // empty: the server's socket with .control after its name
   SmbusControl::Request sim; // the command after sim, other than play
   std::string done;          // that command in words, for a user to see that it is done
   std::string scenario;      // to play; empty for other commands
   std::string recording;     // to print; empty: trace the running server
   bool past = false;         // trace what has passed, not what passes
   std::string pastBus;       // empty: of all busses
   bool failures = false;     // only what led to the last failures
   bool vcd = false;          // as a value change dump
   double interval = 1;       // of top, in seconds
   unsigned count = 0;        // intervals; 0: no end
   bool chips = false;        // a row for each
};

// Fills the options. When there is nothing more to do, prints the help, the version or what is
// wrong, and returns the exit code.
std::optional<ExitCode> parseCommandLine( int argc, char **argv, Options & );

} // namespace SmbusClient
