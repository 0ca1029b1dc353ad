#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Host {

// The state of an object, of one of its values, or of a module's presence.
enum class State {
   Ok,
   Stale,       // the last reading without a fault is too old
   Unreadable,  // the last attempt failed
   Absent,      // there is no module, and this was read without a fault
   Unmanaged,   // there is a module, but its model is unknown
   Unsupported, // the driver or the platform doesn't provide it
};

// "ok", "stale" and so on.
std::string_view nameOf( State state );
std::optional<State> stateOf( std::string_view name );

// Why something is not ok: the pl_status of an operation, if there is one, and an explanation.
struct Fault {
   std::optional<int> status{};
   std::string words{};
   bool operator==( const Fault & ) const = default;
};

// "status 6 (transaction): WORDS", or only one of the two.
std::string toText( const Fault &fault );

using Scalar = std::variant<std::monostate, bool, int64_t, double, std::string>;

// One value that an operation of an object returned.
struct Reading {
   std::string name{}; // "temperature"; unique in its object
   std::string unit{}; // empty for plain numbers and texts
   State state = State::Ok;
   Scalar value{}; // the last good one; empty where the state says that there is none
   Fault fault{};
};

// A reading for users.
struct ValueReport {
   Reading reading{};
   double age = 0; // seconds since its value was read; without a value, since the last attempt
};

// An object for users: its own state, and its values.
struct ObjectReport {
   std::string name{};
   std::string type{};
   State state = State::Ok;
   Fault fault{};
   double age = 0;
   std::vector<ValueReport> values{};
};

using BoardReport = std::vector<ObjectReport>;

// Whether any object or value of the board is stale or unreadable.
bool hasUnreadable( const BoardReport &board );

} // namespace Host
