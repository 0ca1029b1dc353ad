#pragma once

#include "boardfiles/DriverTable.h"
#include "boardfiles/Finding.h"
#include "boardfiles/TopologyIndex.h"

#include <map>
#include <rapidjson/document.h>
#include <string>
#include <string_view>

namespace BoardFiles {

// Checks device documents against the topology and against what the drivers want. One of it goes
// over a whole board, because the plug-in keeps one driver object for each did.
class DeviceCheck {
 public:
   DeviceCheck( const DriverTable &drivers, const TopologyIndex &topology, Findings &findings );

   // The document of an object of a kind.
   void check( const rapidjson::Value &document, std::string_view kind, const Place &place );

   // An SMBus object given by the label of a topology device, which `driver` will serve.
   void checkLabel( std::string_view label, std::string_view kind, const Place &place );

   // The system object, which asks for topology devices by their labels.
   void checkSystem( const Place &place );

 private:
   struct Owner {
      std::string driver;
      Place place;
   };
   // What made the driver object of a did, and so decides what that can make.
   struct Maker {
      const Variant *variant; // null: all that the driver can
      Place place;
   };

   void checkInline( uint32_t did, const TopologyIndex::Device &device );
   const DriverRule *checkDriver( const rapidjson::Value &document, const Place &place );
   void checkWhereItStands( const rapidjson::Value &document, bool isComposite,
                            const Place &place );
   void checkParts( const rapidjson::Value &document, const KindRule &kind, const Place &place );
   void checkPart( const std::string &text, const std::string &kind, const Place &place );
   void checkVariant( const rapidjson::Value &document, uint32_t did, const DriverRule &driver,
                      std::string_view kind, const Place &place );
   void claim( uint32_t did, std::string_view driver, const Place &place );

   const DriverTable &drivers_;
   const TopologyIndex &topology_;
   Findings &findings_;
   std::map<uint32_t, Owner> owners_;
   std::map<uint32_t, Maker> makers_;
};

} // namespace BoardFiles
