// What objects.json says of the health of objects: limits, what they are on, and rules.
#pragma once

#include "boardfiles/Json.h"
#include "boardfiles/Kind.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

// The limits of one value, in its unit. A value that equals a limit is still good.
struct ValueLimits {
   std::optional<double> lowCritical{};
   std::optional<double> lowWarning{};
   std::optional<double> highWarning{};
   std::optional<double> highCritical{};
   double hysteresis = 0; // so far back a value has to come before it is good again
   double hold = 0;       // seconds that it has to be beyond a limit before that counts
   bool latched = false;  // it stays until somebody acknowledges it
   bool ignored = false;  // no limit counts now, whoever has named one

   bool any() const { return lowCritical || lowWarning || highWarning || highCritical; }
   bool operator==( const ValueLimits & ) const = default;
};

// A rotor has to follow what was last set on a fan: its own row, or that of its module.
struct FollowRule {
   std::string fan{};
   double seconds = 0; // after a setting, until it counts
   double percent = 0; // of the speed that was set; more than this is a fault
   Place fanPlace{};
};

// What the health of an object depends on beside its own values.
struct HealthKeys {
   std::optional<std::string> in{}; // the object that it is on: a supply in its slot
   Place inPlace{};
   bool wanted = false; // of a slot: it is a fault when there is no module
   std::map<std::string, ValueLimits, std::less<>> limits{}; // by value
   std::optional<FollowRule> follows{};
};

// A rule over several objects.
struct BoardRule {
   std::string name{};
   std::vector<std::string> members{};
   size_t wanted = 0;               // so many of the members have to be good; fewer is a warning
   size_t needed = 0;               // fewer than these is critical
   std::vector<std::string> same{}; // where not empty: the texts of all members have the same of
                                    // these words
   Place place{};
   std::vector<Place> memberPlaces{};
};

// What `json`, an object of this kind, says. Reports limits that contradict each other, and values
// that objects of this kind don't have.
HealthKeys healthKeysIn( const Json &json, std::optional<Kind> kind, Findings &findings );
BoardRule ruleIn( const Json &json );

// The unit of a value that an object of this kind can have; nothing when it has no such number.
std::optional<std::string_view> unitOf( Kind kind, std::string_view value );

} // namespace BoardFiles
