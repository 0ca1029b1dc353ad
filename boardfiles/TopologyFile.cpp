#include "boardfiles/TopologyFile.h"

#include "boardfiles/JsonFile.h"

#include <fmt/format.h>

namespace BoardFiles {

namespace {

TopologyDevice deviceAt( const JsonPlace &place ) {
   TopologyDevice device{ place.member( "did" ).number(), {}, place.pointer() };
   if ( const auto address = place.find( "address" ) )
      device.address = static_cast<uint8_t>( address->member( "address" ).number( Bus::maxId ) );
   return device;
}

TopologyBus busAt( const JsonPlace &place );

TopologyMux muxAt( const JsonPlace &place ) {
   TopologyMux mux{ place.member( "did" ).number(), {}, place.pointer() };
   for ( const JsonPlace &bus : place.elementsOf( "busses" ) )
      mux.busses.push_back( busAt( bus ) );
   return mux;
}

TopologyBus busAt( const JsonPlace &place ) {
   TopologyBus bus{ place.member( "id" ).number(), {}, {}, place.pointer() };
   for ( const JsonPlace &device : place.elementsOf( "devices" ) )
      bus.devices.push_back( deviceAt( device ) );
   for ( const JsonPlace &mux : place.elementsOf( "muxes" ) )
      bus.muxes.push_back( muxAt( mux ) );
   return bus;
}

TopologyRoot rootAt( const JsonPlace &place, Bus::Master master, uint32_t pci,
                     uint32_t accelerator ) {
   const uint32_t id = place.member( "id" ).number( Bus::maxId );
   return { Bus::rootBusId( master, pci, accelerator, id ), busAt( place ) };
}

void addMedium( const JsonPlace &place, std::vector<TopologyRoot> &roots ) {
   const std::string type = place.member( "type" ).text();
   const auto addAccelerators = [&]( Bus::Master master, uint32_t pci ) {
      for ( const JsonPlace &accelerator : place.elementsOf( "accelerators" ) ) {
         const uint32_t id = accelerator.member( "id" ).number( Bus::maxId );
         for ( const JsonPlace &bus : accelerator.elementsOf( "busses" ) )
            roots.push_back( rootAt( bus, master, pci, id ) );
      }
   };
   if ( type == "SCD" ) {
      addAccelerators( Bus::Master::Scd, place.member( "pci" ).number() );
   } else if ( type == "Celestica" ) {
      addAccelerators( Bus::Master::Celestica, 0 );
   } else if ( type == "IOPort" ) {
      roots.push_back( rootAt( place.member( "bus" ), Bus::Master::IoPort, 0, 0 ) );
   } else if ( type == "I2C" ) {
      const auto simulated = place.find( "simulated" );
      const bool isSimulated = simulated && simulated->truth();
      const Bus::Master master = isSimulated ? Bus::Master::Simulated : Bus::Master::I2c;
      roots.push_back( rootAt( place.member( "bus" ), master, 0, 0 ) );
   } else {
      place.member( "type" ).fail(
         fmt::format( "unknown type \"{}\", where SCD, I2C, IOPort or Celestica is due", type ) );
   }
}

} // namespace

TopologyFile loadTopology( const std::string &path ) {
   const JsonFile file = readJsonFile( path );
   TopologyFile topology{ path, {} };
   for ( const JsonPlace &medium : JsonPlace( file ).elements() )
      addMedium( medium, topology.roots );
   return topology;
}

} // namespace BoardFiles
