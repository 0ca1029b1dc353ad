#pragma once

#include "boardfiles/Json.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

// A device document: which driver drives which device of the topology, at which address, and the
// driver's arguments. In objects.json under "device", in the topology a device with a driver.
struct DeviceDocument {
   // A number of the file with its place.
   struct Id {
      uint32_t number;
      Place place;
   };

   std::string text{}; // as its file has it: this is what the plug-in gets
   Place place{};
   std::optional<Id> did{};
   std::optional<Id> uid{};
   std::optional<Id> address{}; // seven bits, of the chip
   std::string driver{};
   Place driverPlace{};
   bool isMultiDevice = false;
   Place isMultiDevicePlace{}; // the document's where it has no such key
   std::optional<Json> driverArgs{};
   std::optional<Json> parts{}; // "multiDeviceArgs": JSON texts by name
};

// What the schema refuses is left out.
DeviceDocument deviceDocument( const Json & );

} // namespace BoardFiles
