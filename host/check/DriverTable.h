#ifndef ORBIS_HOST_CHECK_DRIVERTABLE_H
#define ORBIS_HOST_CHECK_DRIVERTABLE_H

#include "check/Finding.h"

#include <filesystem>
#include <map>
#include <optional>
#include <rapidjson/document.h>
#include <string>
#include <vector>

namespace Host {

/// What one driver argument has to be.
struct ArgumentRule {
   std::string type; ///< "integer", "number", "text", "boolean" or "flag"
   bool required = false;
   std::optional<double> minimum{};
   std::optional<double> maximum{};
   std::vector<std::string> choices{}; ///< empty: any
};
using ArgumentRules = std::map<std::string, ArgumentRule, std::less<>>;

/// What a driver wants to be told to make one kind of object.
struct KindRule {
   ArgumentRules args{};
   std::vector<std::vector<std::string>> numbered{};
   std::string by{}; ///< the argument that says which case holds; empty: there are no cases
   std::map<std::string, ArgumentRules, std::less<>> cases{};
   std::map<std::string, std::string, std::less<>> nested{}; ///< key of a part, and its kind
};

struct DriverRule {
   bool isMultiDevice = false;
   ArgumentRules args{}; ///< taken whatever kind is made
   std::map<std::string, KindRule, std::less<>> makes{};
};

/// The data file of a plug-in.
struct DriverTable {
   std::vector<std::string> hams{};
   std::vector<std::string> faultTraces{};
   std::map<std::string, DriverRule, std::less<>> drivers{};
};

/// Nothing, and findings, when the file isn't what its schema wants.
std::optional<DriverTable> loadDriverTable( const std::filesystem::path &path, Findings &findings );

} // namespace Host

#endif
