#pragma once

#include "boardfiles/DriverTable.h"
#include "boardfiles/ObjectsFile.h"
#include "boardfiles/TopologyFile.h"

#include <map>
#include <string>
#include <string_view>

namespace BoardFiles {

// Checks device documents against the topology and against what the drivers need. One checker goes
// over a whole board, because the plug-in keeps one driver object for each did.
class DeviceCheck {
 public:
   // Checks the topology's own documents, its muxes' drivers and its access methods at once.
   DeviceCheck( const DriverTable &drivers, const TopologyFile &topology, Findings &findings );

   // An object of the board, in the order of their file.
   void check( const BoardObject &object );

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

   // The document of an object of a kind.
   void check( const DeviceDocument &document, std::string_view kind );
   // An SMBus object that names a topology device by its label, whose driver will serve it.
   void checkLabel( std::string_view label, std::string_view kind, const Place &place );
   // The system object, which asks for topology devices by their labels.
   void checkSystem( const Place &place );
   void checkInTopology( const TopologyDevice &device );
   void checkMuxes( const TopologyBus &bus );
   void checkMux( const TopologyMux &mux, const TopologyBus &bus );
   const DriverRule *checkDriver( const DeviceDocument &document );
   void checkAddress( const DeviceDocument &document, bool isComposite );
   void checkParts( const DeviceDocument &document, const KindRule &kind );
   void checkLookUp( const TopologyDevice &device, const Place &place );
   void checkPart( const Json &text, const std::string &kind );
   void checkVariant( const DeviceDocument &document, const DriverRule &driver,
                      std::string_view kind );
   void claim( const DeviceDocument &document );
   std::string nearest( const std::string &driver ) const;

   const DriverTable &drivers_;
   const TopologyFile &topology_;
   Findings &findings_;
   std::map<uint32_t, Owner> owners_;
   std::map<uint32_t, Maker> makers_;
};

} // namespace BoardFiles
