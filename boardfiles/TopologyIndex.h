#pragma once

#include "boardfiles/DriverTable.h"
#include "boardfiles/Finding.h"

#include <cstdint>
#include <map>
#include <optional>
#include <rapidjson/document.h>
#include <string>
#include <vector>

namespace BoardFiles {

// What the objects of a board can refer to in its topology. Values that the schema refuses are
// passed over here.
class TopologyIndex {
 public:
   struct Device {
      const rapidjson::Value *json;
      Place place;
      std::optional<uint32_t> address; // where the file tells it
      bool inlined;                    // carries a device document, with a driver
   };

   // Reports ids and labels that stand twice, muxes whose chip isn't beside them, unknown hams.
   TopologyIndex( const rapidjson::Value &media, const Place &place, const DriverTable &drivers,
                  Findings &findings );

   const std::map<uint32_t, Device> &devices() const { return devices_; }
   const Device *byDid( uint32_t did ) const;
   const Device *byUid( uint32_t uid ) const;
   const Device *byLabel( std::string_view label ) const;

 private:
   using Ids = std::map<uint32_t, Place>;

   void addBus( const rapidjson::Value &bus, const Place &place );
   void addBusses( const rapidjson::Value *busses, const Place &place );
   void addDevice( const rapidjson::Value &json, const Place &place );
   void checkMux( std::optional<uint32_t> did, const rapidjson::Value *devices,
                  const Place &place );
   // False, with a finding, when the id is there already.
   bool takeId( Ids &taken, const rapidjson::Value *id, const char *what, const Place &place );

   const DriverTable &drivers_;
   Findings &findings_;
   std::map<uint32_t, Device> devices_;
   std::map<uint32_t, uint32_t> didOfUid_;
   std::map<std::string, uint32_t, std::less<>> didOfLabel_;
   Ids dids_, uids_;
};

} // namespace BoardFiles
