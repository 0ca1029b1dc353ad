// A simulated board with a running server on its own socket, and the programs that use it.
#pragma once

#include "PrivateFolder.h"
#include "Shown.h"
#include "StartedProgram.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

// The exit code and output of a program.
struct Ran {
   int exitCode;
   std::string output;
   std::string errors;
};

class RunningBoard {
 public:
   // A board of the project's boards folder. `server` are further arguments of the server.
   explicit RunningBoard( const std::string &name, std::vector<std::string> server = {} );
   // A board with these files.
   RunningBoard( const std::string &topology, const std::string &objects,
                 const std::string &simulation );

   const TestSupport::StartedProgram &server() const { return *server_; }
   void startServer();
   void killServer();
   int stopServer(); // by SIGTERM; returns its exit code

   // These run a program to its end.
   Shown show();
   // An orbis-host command; the board is added to its arguments.
   Ran host( const std::vector<std::string> &words );
   // A quantity of the simulation's physical model.
   double quantity( const std::string &part, const std::string &name );
   // All quantities, by chip or part ("fan3.inlet").
   std::map<std::string, std::map<std::string, double>> quantities();
   std::string smbus( const std::vector<std::string> &words );
   // Plays the scenario file with this path.
   Ran play( const std::string &path );
   // The number of transfers on all busses so far.
   uint64_t transfers();
   // Starts `orbis-host serve` with these arguments. From then on, host commands use it.
   std::unique_ptr<TestSupport::StartedProgram> serve( const std::vector<std::string> &words );
   std::string served() const { return folder_.read( "served" ); } // its output so far

   // Starts `orbis-host watch`; its output goes to a file.
   std::unique_ptr<TestSupport::StartedProgram> watch( const std::string &period );
   // Waits for a row of `object` with `text` in the watched table, from `start`. Returns its end.
   size_t waitForRow( const std::string &object, const std::string &text, size_t start );
   // The length of the watched table so far.
   size_t watched() const;
   // The number of rows of `object` with `text` from `start` to `end`.
   int countRows( const std::string &object, const std::string &text, size_t start,
                  size_t end ) const;

 private:
   // Starts a program; its output goes to a file, so that it never waits for a reader.
   std::unique_ptr<TestSupport::StartedProgram> start( const std::vector<std::string> &command,
                                                       const std::string &file );

   TestSupport::PrivateFolder folder_;
   std::string board_;
   const std::vector<std::string> serverWords_{};
   std::string socket_ = folder_.file( "smbus.sock" );
   std::unique_ptr<TestSupport::StartedProgram> server_;
};
