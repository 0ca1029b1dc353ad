// The description of one device as its drivers see it, and the table of drivers.
#pragma once

#include "OrbisGeneric/AhamAddress.h"
#include "OrbisGeneric/HostServices.h"

#include <functional>
#include <map>
#include <memory>
#include <rapidjson/fwd.h>
#include <string>

namespace Component {
class DeviceBase;
}
namespace Ham {
class Ham;
}

namespace Drivers {

using rapidjson::Value;

// The uid of a device that is described without a component.
constexpr uint32_t noComponent = 0xFFFFFFFF;

// A device-argument document, parsed. What is missing or of the wrong type in a well-formed
// document is the host's mistake and an assertion failure.
struct DriverArgs {
   std::string driver;
   uint32_t uid = 0;
   uint32_t did = 0;
   AhamAddress address{};
   std::map<std::string, std::string> driverArgs; // every value as text
   const char *jsonText = nullptr;                // borrowed: the text must outlive the record
   bool isMultiDevice = false;
   std::map<std::string, std::string> multiDeviceArgs; // filled only for a multi-device

   // Fills the record from a text. False, with a trace and nothing filled, when it is not JSON.
   bool parseJSON( const char *text );
   // Fills the record from a parsed object.
   void parseJSON( const Value &json );
   // A new record, without the text.
   static std::shared_ptr<DriverArgs> fromJSON( const Value &json );
};

// Adds the driver argument key = value to the document json and hands the new text out; it stays
// valid as long as the process lives. False, with a trace and *out untouched, when json isn't JSON.
// An argument of that name which is there already stays before the new one, which wins when parsed.
ORBIS_EXPORT bool insertDriverArg( const char *json, char **out, const char *key,
                                   const char *value );

using DriverFactory = std::function<Component::DeviceBase *( const DriverArgs &, Ham::Ham * )>;

// Factories by driver name; filled when the library is loaded and not changed after. A factory's
// object is not initialised yet.
extern std::map<std::string, DriverFactory> drivers;

} // namespace Drivers
