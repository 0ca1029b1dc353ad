#pragma once

#include "boardfiles/HealthKeys.h"
#include "health/Event.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Health {

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
// Unreadable or stale.
bool isBad( State state );

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

// A number and when it was read.
struct Extreme {
   double number = 0;
   WallTime at{};
};

// How a value stands to its limits.
struct ValueHealth {
   Level level = Level::Indeterminate;
   WallTime since{};      // of that level
   uint64_t changes = 0;  // of the level
   std::string crossed{}; // "above the critical limit of 100 °C"; empty: no limit
   std::optional<BoardFiles::ValueLimits> limits{};
   std::optional<Extreme> lowest{};
   std::optional<Extreme> highest{};
   std::vector<Extreme> last{}; // the last numbers, oldest first; only where they were asked for
};

// Of an object: what is wrong with it, and what explains that.
struct ObjectHealth {
   Level level = Level::Ok;
   std::string cause{};               // empty: nothing is wrong, or it is not known yet why
   bool isAbsent = false;             // the module that it is on, or is, isn't there
   std::vector<ValueHealth> values{}; // one for each value of the report
};

// An object for users: its own state, and its values.
struct ObjectReport {
   std::string name{};
   std::string type{};
   State state = State::Ok;
   Fault fault{};
   double age = 0;
   std::vector<ValueReport> values{};
   std::optional<ObjectHealth> health{}; // where somebody watches over it

   // Null when there is no such value.
   const ValueReport *find( std::string_view value ) const;
};

using BoardReport = std::vector<ObjectReport>;

// How many values of pl_status toText() knows a name for.
inline constexpr size_t namedStatuses = 7;

// Whether any object or value of the board is stale or unreadable.
bool hasUnreadable( const BoardReport &board );

} // namespace Health
