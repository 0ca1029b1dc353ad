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
   unsigned addressSize = 1;    // bytes of its registers' numbers
   std::string driver{};
   Place driverPlace{};
   bool isMultiDevice = false;
   Place isMultiDevicePlace{}; // the document's where it has no such key
   std::optional<Json> driverArgs{};
   std::optional<Json> parts{}; // "multiDeviceArgs": JSON texts by name

   // A driver argument; null when there is none.
   const Json *argument( std::string_view name ) const {
      return driverArgs ? driverArgs->find( name ) : nullptr;
   }
   // As a driver reads it: a number, or its decimal text. Nothing when there is none.
   std::optional<double> argumentNumber( std::string_view name ) const;
};

// What the schema refuses is left out.
DeviceDocument deviceDocument( const Json & );

} // namespace BoardFiles
