// The description of one device, as its driver gets it. Defined in Drivers.cpp: that is the file
// that the assertions name.
#pragma once

#include "OrbisGeneric/AhamAddress.h"
#include "OrbisGeneric/HostServices.h"

#include <map>
#include <memory>
#include <rapidjson/fwd.h>
#include <string>

namespace Drivers {

using rapidjson::Value;

// The uid of a device that is described without a component.
constexpr uint32_t noComponent = 0xFFFFFFFF;

// A parsed device-argument document. A well-formed document that lacks a key, or has a value of the
// wrong type, is the host's mistake: an assertion fails.
struct DriverArgs {
   std::string driver;
   uint32_t uid = 0;
   uint32_t did = 0;
   AhamAddress address{};
   std::map<std::string, std::string> driverArgs; // every value as text
   const char *jsonText = nullptr;                // borrowed: the text must outlive the record
   bool isMultiDevice = false;
   std::map<std::string, std::string> multiDeviceArgs; // filled only for a multi-device

   // Fills the record from a text. When the text is not JSON: false and a trace, and the record
   // is unchanged.
   bool parseJSON( const char *text );
   // Fills the record from a parsed object.
   void parseJSON( const Value &json );
   // A new record, without the text.
   static std::shared_ptr<DriverArgs> fromJSON( const Value &json );
};

// Adds the driver argument key = value to the document json and returns the new text in out. The
// text is valid until the process ends. When json is not JSON: false and a trace, and *out is
// unchanged. An argument that has this name already stays in front of the new one; the parser uses
// the last one.
ORBIS_EXPORT bool insertDriverArg( const char *json, char **out, const char *key,
                                   const char *value );

} // namespace Drivers
