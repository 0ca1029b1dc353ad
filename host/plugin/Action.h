#pragma once

#include "boardfiles/Kind.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Host {

// Something that an object is asked to do: an operation of its table, and what it is given.
struct Action {
   std::string operation{}; // in the words of pl.h: "set_rpm"
   std::vector<int64_t> arguments{};
   bool operator==( const Action & ) const = default;
};

// The action that words ask of an object of a kind, as they stand behind its name on the command
// line: "reset", "on". Else a sentence that says what is wrong.
std::variant<Action, std::string> parseAction( BoardFiles::Kind kind,
                                               const std::vector<std::string> &words );

// What can be asked of a kind, one line each: "reset on|off".
std::vector<std::string> usageOf( BoardFiles::Kind kind );

// "off", "good" and so on, by the number of a pl_led_status.
std::string_view nameOfSetting( int64_t setting );

} // namespace Host
