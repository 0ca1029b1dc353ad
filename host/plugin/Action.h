#pragma once

#include "boardfiles/Kind.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Host {

// An operation for an object to carry out, with its arguments.
struct Action {
   std::string operation{}; // its name in pl.h: "set_rpm"
   std::vector<int64_t> arguments{};
   bool operator==( const Action & ) const = default;
};

// The operation of SMBus objects that read a supply's status: it sends CLEAR_FAULTS.
inline constexpr auto clearFaults = "clear_faults";

// The action for the words behind an object's name on the command line: "reset", "on". For wrong
// words the result is an error text.
std::variant<Action, std::string> parseAction( BoardFiles::Kind kind,
                                               const std::vector<std::string> &words );

// The commands of a kind, one line each: "reset on|off".
std::vector<std::string> usageOf( BoardFiles::Kind kind );

// The name of a pl_led_status: "off", "good" and so on.
std::string_view nameOfSetting( int64_t setting );

} // namespace Host
