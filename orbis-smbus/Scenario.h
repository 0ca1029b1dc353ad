#pragma once

#include "orbis-smbus/ControlConversation.h"

#include <string>
#include <vector>

namespace SmbusClient {

// A scenario as a file has it, a step on a line, what stands behind # ignored:
//    at 3s pull psu2
//    expect fan3.inlet rpm 0 within 4s
//    expect psu1 load 21.5
//    expect fan1.inlet rpm 12000+-100 within 10s
// Times are the simulation's, from the beginning of the scenario. An expectation begins with the
// end of the step before it, and is met when the quantity is within half a unit of the value, or as
// near as is said.
class Scenario {
 public:
   // Throws Failed with the file, the line and what is wrong there.
   explicit Scenario( const std::string &path );

   // Steps the simulation's clock where that stands still, else waits for it. Each step is printed
   // as it is done. Throws Failed at the first expectation that isn't met, and at the first command
   // that can't be done, with its line.
   void play( ControlConversation & ) const;

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
   void expect( const Step &, ControlConversation & ) const;
   [[noreturn]] void fail( size_t line, const std::string &reason ) const;

   const std::string path_;
   std::vector<Step> steps_;
};

} // namespace SmbusClient
