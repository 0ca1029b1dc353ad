#pragma once

#include "boardfiles/Kind.h"
#include "optics/Module.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Host {

// The program's exit codes.
enum ExitCode {
   exitOk = 0,
   exitUnreadable = 1, // a value could not be read, or an action failed
   exitUsage = 2,
   exitBadBoard = 3, // the board's files, or the plug-in's data file
   exitNoPlugin = 4, // the plug-in can't be loaded
   exitNoChild = 5,  // the plug-in's process can't be run, or serve has no socket
   exitUnknown = 3,  // of health: it can't be told
};

// The command line.
struct Options {
   enum class Command {
      Nothing,
      Check,
      Show,
      Health,
      Why,
      Module,
      Modules,
      Watch,
      Serve,
      Events,
      Acknowledge,
      Act,
      Child
   };
   Command command = Command::Nothing;
   std::filesystem::path board{};
   std::string plugin{};            // file name for dlopen()
   std::filesystem::path drivers{}; // the plug-in's data file
   int traceLevel = -1;             // print the traces up to this level
   bool verbose = false;
   bool json = false;
   bool brief = false;                           // one line
   bool perfdata = false;                        // with numbers for a monitoring system
   bool raw = false;                             // a module's bytes
   bool hex = false;                             // the same for people
   std::filesystem::path image{};                // a file with a module's bytes
   std::optional<Optics::Standard> standard{};   // that it follows
   bool plain = false;                           // watch: no full screen
   bool strict = false;                          // a warning about a board is an error
   double period = 1;                            // seconds between two readings
   double limit = 12;                            // seconds for one operation of an object
   std::map<BoardFiles::Kind, double> periods{}; // of kinds with their own period
   BoardFiles::Kind kind{};                      // of the object for an action
   std::string object{};                         // the object's name; empty for the system, or all
   std::vector<std::string> words{};             // the action, or causes
   std::filesystem::path events{};               // the journal's file; empty: beside the socket
   std::string since{};                          // events since then
   bool follow = false;                          // and those that come
   std::string http{};                           // address for HTTP besides the Unix socket
   bool httpAnyAddress = false;                  // it may be reached from other machines
   std::filesystem::path httpControl{};          // the file with the token of who may act there
   std::string controlGroup{};                   // who may act at the Unix socket; empty: no group
   bool all = false;                             // acknowledge every cause
   bool yes = false;                             // cut power without a question
};

// Parses the command line. Where it prints help, the version or an error, `command` is Nothing and
// `exitCode` is set.
Options parseCommandLine( int argc, char **argv, int &exitCode );

} // namespace Host
