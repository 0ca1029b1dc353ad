#pragma once

#include "smbus/Control.pb.h"

#include <functional>
#include <string>
#include <vector>

namespace SmbusClient {

// A scenario file has one step on each line; # begins a comment:
//    at 3s pull psu2
//    expect fan3.inlet rpm 0 within 4s
//    expect psu1 load 21.5
//    expect fan1.inlet rpm 12000+-100 within 10s
// The commands are those of "orbis-smbus sim". Times are the simulation's and count from the start
// of the scenario. An expectation starts when the step before it has ended. It is met when the
// quantity differs from the value by no more than the tolerance, 0.5 without one.
class Scenario {
 public:
   // Asks the simulated board. Throws Failed with its reason.
   using Ask = std::function<SmbusControl::Response( const SmbusControl::Request & )>;

   // Throws Failed with file, line and reason.
   explicit Scenario( const std::string &path );

   // Prints each step when it is done. At speed 0 it moves the simulation's clock; otherwise it
   // waits. Throws Failed, with the line, at the first command that fails and at the first
   // expectation that is not met.
   void play( const Ask & ) const;

 private:
   struct Step {
      size_t line = 0;
      std::string text;
      double at = 0;                 // of a command
      SmbusControl::Request request; // the command, or the quantity that is expected
      bool expects = false;
      double value = 0;
      double tolerance = 0.5;
      double within = 0; // seconds
   };
   static Step parse( const std::vector<std::string> &words );
   void expect( const Step &, const Ask & ) const;
   [[noreturn]] void fail( size_t line, const std::string &reason ) const;

   const std::string path_;
   std::vector<Step> steps_;
};

} // namespace SmbusClient
