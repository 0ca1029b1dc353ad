#pragma once

#include "smbus/RootBusId.h"

#include <CLI/App.hpp>

#include <string>
#include <vector>

namespace Smbusd {

// What the server is told to do.
struct Options {
   std::string socket = "/run/orbis/smbus.sock";
   std::string control;
   std::string group;
   std::string topology;
   std::string simulation;
   std::string routes;
   std::string recordTo;
   std::string replayFrom;
   std::vector<Bus::RootBusId> lent;
   bool asSlow = false; // as what is replayed
   std::string logLevel = "info";
   unsigned transactionLimit = 2000; // ms
   double speed = 1;

   std::string routesToCheck;
   bool elsewhere = false; // they are another machine's
};

// Parsing fills the options, which outlive the app, and runs nothing.
void describe( CLI::App &, Options & );

// Throws CLI11's own complaint where parsed options make no sense together.
void checkTogether( const CLI::App &, const Options & );

} // namespace Smbusd
