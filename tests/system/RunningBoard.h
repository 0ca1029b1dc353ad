// A simulated board with its server running on a private socket, and the programs that talk to it.
#pragma once

#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <map>
#include <memory>
#include <string>

// What orbis-host show told.
struct Shown {
   int exitCode;
   std::map<std::string, double> values;      // of objects that are "ok", by name
   std::map<std::string, std::string> faults; // of the others: "state: words"
};

class RunningBoard {
 public:
   // The board of the project's boards folder.
   explicit RunningBoard( const std::string &name );
   // A board of these files.
   RunningBoard( const std::string &topology, const std::string &objects,
                 const std::string &simulation );

   void startServer();
   void killServer();

   // Each runs to its end.
   Shown show();
   // Exit code of an orbis-host command, the board named for it; of show and its like, this board.
   int host( const std::vector<std::string> &words );
   // A quantity of the simulation's physical model.
   double quantity( const std::string &whose, const std::string &name );
   std::string smbus( const std::vector<std::string> &words );

   // Starts `orbis-host watch` into a file that can be looked at meanwhile.
   std::unique_ptr<SmbusdTest::StartedProgram> watch( const std::string &period );
   // Waits until the watched table's rows of `object` hold `text` from `start` on; the new end.
   size_t waitForRow( const std::string &object, const std::string &text, size_t start );

 private:
   TestSupport::PrivateFolder folder_;
   std::string board_;
   std::string socket_ = folder_.file( "smbus.sock" );
   std::unique_ptr<SmbusdTest::StartedProgram> server_;
};
