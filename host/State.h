#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Host {

// What is known of an object, of one of its values or of a module's presence.
enum class State {
   Ok,
   Stale,       // was good when it was last read, which is too long ago
   Unreadable,  // the last attempt failed
   Absent,      // the module is not there, and that was read without a fault
   Unmanaged,   // a module is there, but none that is known
   Unsupported, // the driver or the platform doesn't provide it
};

// "ok" and so on.
std::string_view nameOf( State state );
std::optional<State> stateOf( std::string_view name );

// Why something is not ok: a pl_status where an operation returned one, and words.
struct Fault {
   std::optional<int> status{};
   std::string words{};
   bool operator==( const Fault & ) const = default;
};

// "status 6: WORDS", or what there is of it.
std::string toText( const Fault &fault );

using Scalar = std::variant<std::monostate, bool, int64_t, double, std::string>;

// One value as an operation of an object's table gave it.
struct Reading {
   std::string name{}; // "temperature"; unique in its object
   std::string unit{}; // empty for plain numbers and texts
   State state = State::Ok;
   Scalar value{}; // nothing unless ok
   Fault fault{};
};

// A reading as users get it.
struct ValueReport {
   Reading reading{};
   double age = 0; // seconds since it was read, or since the attempt that failed
};

// An object as users get it: whether it stands, and its values.
struct ObjectReport {
   std::string name{};
   std::string type{};
   State state = State::Ok;
   Fault fault{};
   double age = 0;
   std::vector<ValueReport> values{};
};

using BoardReport = std::vector<ObjectReport>;

// Whether anything of the board is stale or unreadable.
bool hasUnreadable( const BoardReport &board );

} // namespace Host
