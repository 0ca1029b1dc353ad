#include "boardfiles/TopologyFile.h"

#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <bit>
#include <functional>
#include <set>

namespace BoardFiles {

// Where each number of a kind was first.
class TopologyIds {
 public:
   explicit TopologyIds( std::string what ) : what_( std::move( what ) ) {}

   // False, with a finding, when the number is there already.
   bool add( uint32_t id, const Place &place, Findings &findings ) {
      const auto [first, isNew] = places_.emplace( id, place );
      if ( !isNew )
         report( findings, place,
                 fmt::format( "{} {} is there twice, first at {}", what_, id,
                              toText( first->second ) ) );
      return isNew;
   }

 private:
   const std::string what_;
   std::map<uint32_t, Place> places_;
};

class TopologyReader {
 public:
   TopologyReader( TopologyFile &topology, Findings &findings )
      : topology_( topology ), findings_( findings ) {}

   void read( const Json &media ) {
      for ( const Json &medium : media.elements() )
         readMedium( medium );
      for ( const TopologyRoot &root : topology_.roots )
         indexBus( root.bus );
      for ( const TopologyRoot &root : topology_.roots )
         checkBus( root.bus, false );
      nameFindings();
   }

 private:
   void readMedium( const Json &medium ) {
      if ( const Json *ham = medium.find( "ham" ); ham && ham->toText() )
         topology_.hams.push_back( { std::string( *ham->toText() ), ham->place() } );
      const std::string type = medium.textOf( "type" ).value_or( "" );
      if ( type == "SCD" )
         readAccelerators( medium, Bus::Master::Scd, medium.unsignedOf( "pci" ).value_or( 0 ) );
      else if ( type == "Celestica" )
         readAccelerators( medium, Bus::Master::Celestica, 0 );
      else if ( const Json *bus = medium.find( "bus" ); bus && type == "IOPort" )
         readRoot( *bus, Bus::Master::IoPort, 0, 0 );
      else if ( bus && type == "I2C" ) {
         const Json *simulated = medium.find( "simulated" );
         const bool isSimulated = simulated && simulated->isTrue();
         readRoot( *bus, isSimulated ? Bus::Master::Simulated : Bus::Master::I2c, 0, 0 );
      }
   }

   void readAccelerators( const Json &medium, Bus::Master master, uint32_t pci ) {
      TopologyIds ids( "accelerator id" );
      for ( const Json &accelerator : medium.elementsOf( "accelerators" ) ) {
         const Json *id = accelerator.find( "id" );
         const auto number = id ? id->toUnsigned() : std::nullopt;
         if ( !number )
            continue;
         ids.add( *number, id->place(), findings_ );
         checkRootNumber( *number, id->place() );
         TopologyIds busIds( "bus id" );
         for ( const Json &bus : accelerator.elementsOf( "busses" ) ) {
            readRoot( bus, master, pci, *number );
            addBusId( busIds, bus );
         }
      }
   }

   void addBusId( TopologyIds &ids, const Json &bus ) {
      if ( const auto number = bus.unsignedOf( "id" ) )
         ids.add( *number, bus.find( "id" )->place(), findings_ );
   }

   void checkRootNumber( uint32_t number, const Place &place ) {
      if ( number > Bus::maxId )
         report( findings_, place,
                 fmt::format( "{} is above {}, the highest that a request can carry", number,
                              Bus::maxId ) );
   }

   void readRoot( const Json &json, Bus::Master master, uint32_t pci, uint32_t accelerator ) {
      if ( json.type() != Json::Type::Object )
         return;
      TopologyBus bus = readBus( json, {} );
      checkRootNumber( bus.id, bus.idPlace );
      topology_.roots.push_back(
         { Bus::rootBusId( master, pci, accelerator, bus.id ), std::move( bus ) } );
   }

   TopologyBus readBus( const Json &json, const std::vector<uint32_t> &muxes ) {
      const Json *id = json.find( "id" );
      TopologyBus bus;
      bus.id = json.unsignedOf( "id" ).value_or( 0 );
      bus.place = json.place();
      bus.idPlace = id ? id->place() : json.place();
      for ( const Json &device : json.elementsOf( "devices" ) )
         readDevice( device, muxes, bus );
      for ( const Json &mux : json.elementsOf( "muxes" ) )
         readMux( mux, muxes, bus );
      return bus;
   }

   void readDevice( const Json &json, const std::vector<uint32_t> &muxes, TopologyBus &bus ) {
      const Json *did = json.find( "did" );
      if ( !did || !did->toUnsigned() || !dids_.add( *did->toUnsigned(), did->place(), findings_ ) )
         return;
      TopologyDevice device{ .did = *did->toUnsigned(), .muxes = muxes, .place = json.place() };
      const Json *address = json.find( "address" );
      const auto number = address ? address->unsignedOf( "address" ) : std::nullopt;
      if ( number && *number <= Bus::maxId )
         device.address = static_cast<uint8_t>( *number );
      if ( json.find( "driver" ) )
         device.document = deviceDocument( json );
      if ( const Json *label = json.find( "label" ); label && label->toText() ) {
         device.label = *label->toText();
         if ( !topology_.didOfLabel_.emplace( device.label, device.did ).second )
            report( findings_, label->place(),
                    fmt::format( "label \"{}\" is there twice", device.label ) );
      }
      for ( const Json &component : json.elementsOf( "components" ) ) {
         const auto uid = component.unsignedOf( "uid" );
         if ( uid && uids_.add( *uid, component.find( "uid" )->place(), findings_ ) )
            topology_.didOfUid_[*uid] = device.did;
      }
      bus.devices.push_back( std::move( device ) );
   }

   void readMux( const Json &json, const std::vector<uint32_t> &muxes, TopologyBus &bus ) {
      const Json *did = json.find( "did" );
      if ( !did || !did->toUnsigned() )
         return;
      TopologyMux mux{ .did = *did->toUnsigned(), .place = json.place(), .didPlace = did->place() };
      std::vector<uint32_t> path = muxes;
      path.push_back( mux.did );
      TopologyIds ids( "bus id" );
      for ( const Json &behind : json.elementsOf( "busses" ) ) {
         if ( behind.type() == Json::Type::Object )
            mux.busses.push_back( readBus( behind, path ) );
         addBusId( ids, behind );
      }
      bus.muxes.push_back( std::move( mux ) );
   }

   void indexBus( const TopologyBus &bus ) {
      for ( const TopologyDevice &device : bus.devices )
         topology_.devices_.emplace( device.did, &device );
      for ( const TopologyMux &mux : bus.muxes ) {
         for ( const TopologyBus &behind : mux.busses )
            indexBus( behind );
      }
   }

   void checkBus( const TopologyBus &bus, bool isChannel ) {
      // The byte that selects the channel.
      if ( isChannel && !std::has_single_bit( static_cast<uint8_t>( bus.id ) ) )
         report( findings_, bus.idPlace,
                 fmt::format( "{} selects no single channel: its low byte must have one bit (1, 2, "
                              "4, ... 128)",
                              bus.id ) );
      for ( const TopologyMux &mux : bus.muxes ) {
         checkMux( mux, bus );
         for ( const TopologyBus &behind : mux.busses )
            checkBus( behind, true );
      }
   }

   void checkMux( const TopologyMux &mux, const TopologyBus &bus ) {
      const auto isChip = [&]( const TopologyDevice &device ) { return device.did == mux.did; };
      if ( std::none_of( bus.devices.begin(), bus.devices.end(), isChip ) )
         report( findings_, mux.didPlace,
                 fmt::format( "the bus of this mux has no device {}, which is to be its chip",
                              mux.did ) );
      std::set<uint32_t> before;
      if ( isReachedThrough( mux.did, mux.did, before ) )
         report( findings_, mux.didPlace,
                 fmt::format( "the mux's chip, device {}, is reached through the mux itself",
                              mux.did ) );
   }

   // Whether the path to a mux's chip leads through another mux, or through the paths of those on
   // the way. The place of the component that a chip names ("uid") counts before its own.
   bool isReachedThrough( uint32_t chip, uint32_t mux, std::set<uint32_t> &before ) const {
      const TopologyDevice *device = topology_.byDid( chip );
      if ( device && device->document && device->document->uid ) {
         if ( const auto *component = topology_.byUid( device->document->uid->number ) )
            device = component;
      }
      if ( !device || !before.insert( chip ).second )
         return false;
      return std::any_of( device->muxes.begin(), device->muxes.end(), [&]( uint32_t on ) {
         return on == mux || isReachedThrough( on, mux, before );
      } );
   }

   // A finding inside a device with a label names it.
   void nameFindings() {
      for ( Finding &finding : findings_ ) {
         for ( const auto &[did, device] : topology_.devices_ ) {
            const Place &place = device->place;
            if ( finding.place.file == place.file && !device->label.empty() &&
                 ( finding.place.pointer + "/" ).starts_with( place.pointer + "/" ) )
               finding.object = device->label;
         }
      }
   }

   TopologyFile &topology_;
   Findings &findings_;
   TopologyIds dids_{ "did" };
   TopologyIds uids_{ "uid" };
};

const TopologyDevice *TopologyFile::byDid( uint32_t did ) const {
   const auto found = devices_.find( did );
   return found == devices_.end() ? nullptr : found->second;
}

const TopologyDevice *TopologyFile::byUid( uint32_t uid ) const {
   const auto found = didOfUid_.find( uid );
   return found == didOfUid_.end() ? nullptr : byDid( found->second );
}

const TopologyDevice *TopologyFile::byLabel( std::string_view label ) const {
   const auto found = didOfLabel_.find( label );
   return found == didOfLabel_.end() ? nullptr : byDid( found->second );
}

std::unique_ptr<const TopologyFile> readTopology( const std::filesystem::path &path,
                                                  Findings &findings ) {
   static const Schema schema( topologySchema );
   const auto json = readJson( path, findings );
   if ( !json )
      return nullptr;
   schema.check( *json, findings );
   auto topology = std::make_unique<TopologyFile>();
   topology->path = path.string();
   topology->text = json->fileText();
   TopologyReader( *topology, findings ).read( *json );
   return topology;
}

std::unique_ptr<const TopologyFile> loadTopology( const std::filesystem::path &path ) {
   Findings findings;
   auto topology = readTopology( path, findings );
   throwErrors( findings );
   return topology;
}

} // namespace BoardFiles
