// A simulated board with its server running on a private socket, and the programs that talk to it.
#pragma once

#include "PrivateFolder.h"
#include "Shown.h"
#include "StartedProgram.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

// How a program ended, and what it said.
struct Ran {
   int exitCode;
   std::string output;
   std::string errors;
};

class RunningBoard {
 public:
   // The board of the project's boards folder; `server` is said to the server besides.
   explicit RunningBoard( const std::string &name, std::vector<std::string> server = {} );
   // A board of these files.
   RunningBoard( const std::string &topology, const std::string &objects,
                 const std::string &simulation );

   const TestSupport::StartedProgram &server() const { return *server_; }
   void startServer();
   void killServer();
   int stopServer(); // asks it to end; its exit code

   // Each runs to its end.
   Shown show();
   // An orbis-host command, the board named for it; of show and its like, this board.
   Ran host( const std::vector<std::string> &words );
   // A quantity of the simulation's physical model.
   double quantity( const std::string &whose, const std::string &name );
   // All of them by whose they are: of a chip itself, or of what it has ("fan3.inlet").
   std::map<std::string, std::map<std::string, double>> quantities();
   std::string smbus( const std::vector<std::string> &words );
   // Plays a scenario, by its path.
   Ran play( const std::string &path );
   // How many transfers have passed on the board's wires.
   uint64_t transfers();
   // Starts `orbis-host serve` and more words; what is asked of the host from now on, it asks that.
   std::unique_ptr<TestSupport::StartedProgram> serve( const std::vector<std::string> &words );
   std::string served() const { return folder_.read( "served" ); } // what that has said so far

   // Starts `orbis-host watch` into a file that can be looked at meanwhile.
   std::unique_ptr<TestSupport::StartedProgram> watch( const std::string &period );
   // Waits until the watched table's rows of `object` hold `text` from `start` on; the new end.
   size_t waitForRow( const std::string &object, const std::string &text, size_t start );
   // How far the watched table has come.
   size_t watched() const;
   // How many of its rows of `object` from `start` to `end` hold `text`.
   int countRows( const std::string &object, const std::string &text, size_t start,
                  size_t end ) const;

 private:
   // A program whose words all go to a file, so that it never waits for a reader.
   std::unique_ptr<TestSupport::StartedProgram> start( const std::vector<std::string> &command,
                                                       const std::string &file );
   // Waits until it has said this; false when it does not within twenty seconds.
   bool says( const std::string &file, const std::string &words ) const;

   TestSupport::PrivateFolder folder_;
   std::string board_;
   const std::vector<std::string> serverWords_{};
   std::string socket_ = folder_.file( "smbus.sock" );
   std::unique_ptr<TestSupport::StartedProgram> server_;
};
