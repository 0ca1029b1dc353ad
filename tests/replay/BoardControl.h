// Controls the simulated board of a replay: random changes, and its clock.
#pragma once

#include "Random.h"
#include "orbis-smbus/ControlConnection.h"

#include <string>
#include <vector>

class BoardControl {
 public:
   // Asks the server at this control socket for its chips, quantities and modules.
   explicit BoardControl( const std::string &socket );

   void step( unsigned milliseconds );
   void clearFaults( const std::string &chip );
   // Sets a quantity, pulls or inserts a module, makes a chip nack transfers or clears its faults.
   // Returns the command and its result. Never touches chips whose faults would end the plug-in:
   // multiplexers, whose faults reach every chip, and the fan board, whose LEDs must blink.
   std::string doSomething( Random &random );

 private:
   std::string carryOut( const SmbusControl::Request &request );
   SmbusControl::Request randomRequest( Random &random ) const;

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
