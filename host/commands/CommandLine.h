#pragma once

#include "boardfiles/Kind.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Host {

// What the program's exit codes mean.
enum ExitCode {
   exitOk = 0,
   exitUnreadable = 1, // something of the board could not be read, or not be done
   exitUsage = 2,
   exitBadBoard = 3, // the board's files, or the plug-in's data file
   exitNoPlugin = 4, // the plug-in can't be loaded
   exitNoChild = 5,  // the child process can't be run
};

// What the user asked for.
struct Options {
   enum class Command { Nothing, Check, Show, Watch, Serve, Act, Child };
   Command command = Command::Nothing;
   std::filesystem::path board{};
   std::string plugin{};            // as dlopen() takes it
   std::filesystem::path drivers{}; // the plug-in's data file
   int traceLevel = -1;             // traces up to this level are printed
   bool verbose = false;
   bool json = false;
   double period = 1;                            // seconds between two readings
   double limit = 12;                            // seconds that one operation of an object may take
   std::map<BoardFiles::Kind, double> periods{}; // of kinds that have one of their own
   BoardFiles::Kind kind{};                      // of the object that is to do something
   std::string object{};                         // its name; empty for the system
   std::vector<std::string> words{};             // what it is to do
   bool yes = false;                             // don't ask before power is cut
};

// Parses the command line. Prints help, version or an error by itself; `command` is Nothing then,
// and `exitCode` says how to end.
Options parseCommandLine( int argc, char **argv, int &exitCode );

} // namespace Host
