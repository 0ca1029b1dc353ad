// The multiplexers that a board's files name, and what a transaction does with them.
#pragma once

#include "boardfiles/RoutesFile.h"
#include "boardfiles/TopologyFile.h"
#include "smbus/Transfer.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Smbusd {

// Addresses on each root bus.
using NamedMuxes = std::map<Bus::RootBusId, std::set<uint8_t>>;

void addMuxes( const BoardFiles::TopologyFile &topology, NamedMuxes &to );
void addMuxes( const BoardFiles::RoutesFile &routes, NamedMuxes &to );

// Follows the requests of a transaction.
class OpenMuxes {
 public:
   // The names outlive it.
   OpenMuxes( const NamedMuxes &muxes, const Bus::RootBusId &bus );

   // Whether the transfer does nothing but set a named multiplexer. Then it is noted.
   bool take( const Bus::Transfer &transfer );
   // What is open, the outermost first: "0x70=1 0x71=4"; empty: nothing.
   std::string path() const;
   // Throws Bus::Refused when the transaction, of which all was taken, leaves one open: whoever
   // comes next would reach chips behind it that he doesn't mean.
   void checkClosed( const Bus::Transaction & ) const;

 private:
   struct Open {
      uint8_t address;
      uint32_t select;
   };
   const std::set<uint8_t> *named_ = nullptr;
   std::vector<Open> open_{};
};

} // namespace Smbusd
