#pragma once

#include "health/Level.h"
#include "health/pmbus/Registers.h"

#include <string>
#include <vector>

namespace Health::Pmbus {

// What a supply says is wrong with it.
struct Condition {
   enum class Kind {
      InputLost,       // too little mains to work with
      OutputFailed,    // no output, or one that can't be used
      FanFailed,       // a fan of its own
      OverTemperature, // of the supply
      Communication,   // somebody asked it for what it doesn't know, or a byte got lost
      Other,
   };

   Kind kind = Kind::Other;
   Level level = Level::Warning;
   std::string words{}; // "input undervoltage"
   bool operator==( const Condition & ) const = default;
};

// All conditions in these registers, those of the input first. A summary bit of STATUS_WORD is a
// condition only where no bit of its register says it better. OFF and POWER_GOOD# follow the
// present, the other bits stay set until somebody clears them. What took the output away is a
// warning, and
// "(over)", when the output is good again.
//
// A refused command is Level::Ok: it tells of the one who asked, and nothing of the supply.
std::vector<Condition> describe( const Registers &registers );

// One sentence for all: "input undervoltage, unit off for insufficient input voltage". "ok" when
// there are none.
std::string sentence( const std::vector<Condition> &conditions );

} // namespace Health::Pmbus
