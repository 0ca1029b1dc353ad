// Where the chips of a board's objects are on its busses.
#pragma once

#include "boardfiles/DeviceDocument.h"
#include "boardfiles/TopologyFile.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

// A chip: all devices and objects with the same place are views of it.
struct ChipPlace {
   std::string bus{};    // "scd(4):1:2"
   std::string path{};   // the selections before it, the outermost first: "0x70=1 0x71=4"; or empty
   uint32_t address = 0; // seven bits

   auto operator<=>( const ChipPlace & ) const = default;
};

// "0x48 behind 0x70=1 on scd(4):1:2".
std::string toText( const ChipPlace &place );
// The multiplexers before a chip, the outermost first.
std::vector<ChipPlace> muxesBefore( const ChipPlace &place );

class ChipPlaces {
 public:
   explicit ChipPlaces( const TopologyFile &topology );

   // The chips of a document: its own, or those of its parts.
   std::vector<ChipPlace> of( const DeviceDocument &document ) const;
   // The chip of the topology's device with this number; nothing where there is none.
   std::optional<ChipPlace> of( uint32_t did ) const;
   // The chip of the topology's device with this label; none where there is none.
   std::vector<ChipPlace> of( std::string_view label ) const;

 private:
   void note( const TopologyBus &bus, const std::string &root, const std::string &path );

   const TopologyFile &topology_;
   std::map<uint32_t, ChipPlace> places_; // by did
};

} // namespace BoardFiles
