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
   std::vector<std::string> holds{};   ///< what a text must hold, each
};
using ArgumentRules = std::map<std::string, ArgumentRule, std::less<>>;

/// What a driver wants to be told to make one kind of object.
struct KindRule {
   ArgumentRules args{};
   std::vector<ArgumentRules> numbered{}; ///< each by the beginnings of names
   std::string by{}; ///< the argument that says which case holds; empty: there are no cases
   std::map<std::string, ArgumentRules, std::less<>> cases{};
   std::map<std::string, std::string, std::less<>> nested{}; ///< key of a part, and its kind
};

/// What a driver object can make that was made by a document with certain arguments.
struct Variant {
   std::string argument{}; ///< that the document has; empty: fits any document
   std::optional<std::string> is{};
   std::vector<std::string> kinds{};
};

struct DriverRule {
   bool isMultiDevice = false;
   ArgumentRules args{}; ///< taken whatever kind is made
   std::map<std::string, KindRule, std::less<>> makes{};
   std::vector<Variant> variants{}; ///< the first that fits counts
};

/// A topology device that the system object asks for.
struct SystemDevice {
   std::string label{};
   std::string driver{}; ///< empty: any, or none
};

/// The data file of a plug-in.
struct DriverTable {
   std::vector<std::string> hams{};
   std::vector<std::string> faultTraces{};
   std::vector<SystemDevice> system{};
   std::map<std::string, DriverRule, std::less<>> drivers{};
};

/// Nothing, and findings, when the file isn't what its schema wants.
std::optional<DriverTable> loadDriverTable( const std::filesystem::path &path, Findings &findings );

} // namespace Host

#endif
