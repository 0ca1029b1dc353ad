// The bench's side of the simulated board: what is done to it at random, and its clock.
#pragma once

#include "Random.h"
#include "orbis-smbus/ControlConnection.h"

#include <string>
#include <vector>

class Bench {
 public:
   // Asks the server at its control socket what there is.
   explicit Bench( const std::string &socket );

   void step( unsigned milliseconds );
   void clearFaults( const std::string &chip );
   // Sets a quantity, pulls or inserts a module, makes a chip nack transfers or clears its faults;
   // in words, with what came of it. Leaves alone what would end the plug-in: multiplexers, whose
   // faults reach every chip, and the fan board, whose LEDs must blink.
   std::string something( Random &random );

 private:
   std::string carryOut( const SmbusControl::Request &request );
   SmbusControl::Request anything( Random &random ) const;

   SmbusClient::ControlConnection server_;
   std::vector<std::string> chips_;
   std::vector<std::string> modules_;
   struct Quantity {
      std::string chip;
      std::string name;
      double value; // at the start
   };
   std::vector<Quantity> quantities_;
};
