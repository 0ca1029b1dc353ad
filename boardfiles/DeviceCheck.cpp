#include "boardfiles/DeviceCheck.h"

#include "boardfiles/ArgumentCheck.h"
#include "boardfiles/Nearest.h"
#include "boardfiles/Schema.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace BoardFiles {

namespace {

bool fits( const Variant &variant, const std::optional<Json> &args ) {
   if ( variant.argument.empty() )
      return true;
   const Json *value = args ? args->find( variant.argument ) : nullptr;
   return value && ( !variant.is || value->toText() == variant.is );
}

} // namespace

DeviceCheck::DeviceCheck( const DriverTable &drivers, const TopologyFile &topology,
                          Findings &findings )
   : drivers_( drivers ), topology_( topology ), findings_( findings ) {
   for ( const TopologyHam &ham : topology.hams ) {
      if ( std::find( drivers.hams.begin(), drivers.hams.end(), ham.name ) == drivers.hams.end() )
         report( findings_, ham.place,
                 fmt::format( "the plug-in has no access method \"{}\"{}", ham.name,
                              didYouMean( ham.name, drivers.hams ) ) );
   }
   for ( const TopologyRoot &root : topology.roots )
      checkMuxes( root.bus );
   for ( const auto &[did, device] : topology.devices() ) {
      if ( device->document )
         checkInTopology( *device );
   }
}

void DeviceCheck::checkMuxes( const TopologyBus &bus ) {
   for ( const TopologyMux &mux : bus.muxes ) {
      checkMux( mux, bus );
      for ( const TopologyBus &behind : mux.busses )
         checkMuxes( behind );
   }
}

void DeviceCheck::checkMux( const TopologyMux &mux, const TopologyBus &bus ) {
   const auto device = std::find_if( bus.devices.begin(), bus.devices.end(),
                                     [&]( const auto &each ) { return each.did == mux.did; } );
   if ( device == bus.devices.end() )
      return; // reported with the topology
   if ( !device->document ) {
      report( findings_, mux.didPlace,
              fmt::format( "device {} has no driver, so it can't be a mux's chip", mux.did ) );
      return;
   }
   const auto driver = drivers_.drivers.find( device->document->driver );
   if ( driver != drivers_.drivers.end() && !driver->second.makes.contains( "mux" ) )
      report( findings_, mux.didPlace,
              fmt::format( "driver \"{}\" of device {} is not a mux driver",
                           device->document->driver, mux.did ) );
}

void DeviceCheck::checkInTopology( const TopologyDevice &device ) {
   const size_t before = findings_.size();
   claim( *device.document );
   const DriverRule *driver = checkDriver( *device.document );
   if ( driver && driver->isMultiDevice )
      report( findings_, device.document->driverPlace, "a composite can't be in the topology" );
   checkAddress( *device.document, false );
   for ( size_t i = before; i < findings_.size(); ++i )
      findings_[i].object = device.label;
}

void DeviceCheck::check( const BoardObject &object ) {
   if ( !object.kind )
      return;
   if ( object.device )
      check( *object.device, nameOf( *object.kind ) );
   else if ( object.kind == Kind::System )
      checkSystem( object.place );
   else if ( object.kind == Kind::Smbus && object.label )
      checkLabel( *object.label, nameOf( *object.kind ), object.labelPlace );
   for ( size_t i = 0; i < object.module.size(); ++i )
      checkLabel( object.module[i], nameOf( Kind::Smbus ), object.modulePlaces[i] );
}

void DeviceCheck::check( const DeviceDocument &document, std::string_view kind ) {
   const DriverRule *driver = checkDriver( document );
   checkAddress( document, driver && driver->isMultiDevice );
   claim( document );
   if ( !driver )
      return;
   const auto rule = driver->makes.find( kind );
   if ( rule == driver->makes.end() ) {
      report( findings_, document.driverPlace,
              fmt::format( "driver \"{}\" can't make a {}", document.driver, kind ) );
      return;
   }
   checkArguments( document, *driver, rule->second, findings_ );
   if ( document.did )
      checkVariant( document, *driver, kind );
   if ( driver->isMultiDevice )
      checkParts( document, rule->second );
}

void DeviceCheck::checkLabel( std::string_view label, std::string_view kind, const Place &place ) {
   const TopologyDevice *device = topology_.byLabel( label );
   if ( !device ) {
      report( findings_, place, fmt::format( "the topology has no label \"{}\"", label ) );
      return;
   }
   checkLookUp( *device, place );
   if ( !device->document )
      return;
   const auto driver = drivers_.drivers.find( device->document->driver );
   if ( driver != drivers_.drivers.end() && !driver->second.makes.contains( kind ) )
      report(
         findings_, place,
         fmt::format( "the driver of the topology device \"{}\" can't make a {}", label, kind ) );
}

// A look-up by label gives a device that names no driver one, but not an address.
void DeviceCheck::checkLookUp( const TopologyDevice &device, const Place &place ) {
   if ( !device.document && !device.address )
      report( findings_, place,
              fmt::format( "the topology device \"{}\" needs an \"address\" or a driver",
                           device.label ) );
}

void DeviceCheck::checkSystem( const Place &place ) {
   for ( const SystemDevice &needed : drivers_.system ) {
      const TopologyDevice *device = topology_.byLabel( needed.label );
      if ( !device )
         report( findings_, place,
                 fmt::format( "the topology has no label \"{}\"", needed.label ) );
      else if ( !needed.driver.empty() &&
                ( !device->document || device->document->driver != needed.driver ) )
         report( findings_, device->place,
                 fmt::format( "{} must have the driver \"{}\" for the system object", needed.label,
                              needed.driver ) );
      else
         checkLookUp( *device, device->place );
   }
}

// The first document of a did makes the driver object, in the order of the file.
void DeviceCheck::checkVariant( const DeviceDocument &document, const DriverRule &driver,
                                std::string_view kind ) {
   const uint32_t did = document.did->number;
   const auto known = makers_.find( did );
   if ( known == makers_.end() ) {
      const auto variant =
         std::find_if( driver.variants.begin(), driver.variants.end(),
                       [&]( const Variant &one ) { return fits( one, document.driverArgs ); } );
      makers_[did] = { variant == driver.variants.end() ? nullptr : &*variant, document.place };
   } else if ( driver.isMultiDevice ) {
      report(
         findings_, document.did->place,
         fmt::format( "composite {} is already made at {}", did, toText( known->second.place ) ) );
   }
   const Maker &maker = makers_[did];
   if ( maker.variant && std::find( maker.variant->kinds.begin(), maker.variant->kinds.end(),
                                    kind ) == maker.variant->kinds.end() )
      report( findings_, document.place,
              fmt::format( "device {} can't make a {}: the arguments at {}, which make it, allow "
                           "{} only",
                           did, kind, toText( maker.place ),
                           fmt::join( maker.variant->kinds, ", " ) ) );
}

std::string DeviceCheck::nearest( const std::string &driver ) const {
   std::vector<std::string> names;
   for ( const auto &[name, rule] : drivers_.drivers )
      names.push_back( name );
   return didYouMean( driver, names );
}

// The driver's rule; null, and a finding, when there is no such driver.
const DriverRule *DeviceCheck::checkDriver( const DeviceDocument &document ) {
   if ( document.isMultiDevice && !document.parts )
      report( findings_, document.place, "\"multiDeviceArgs\" is missing" );
   if ( document.driver.empty() )
      return nullptr;
   const auto driver = drivers_.drivers.find( document.driver );
   if ( driver == drivers_.drivers.end() ) {
      report( findings_, document.driverPlace,
              fmt::format( "there is no driver \"{}\"{}", document.driver,
                           nearest( document.driver ) ) );
      return nullptr;
   }
   if ( driver->second.isMultiDevice != document.isMultiDevice )
      report( findings_, document.isMultiDevicePlace,
              fmt::format( "\"isMultiDevice\" must be {} for driver \"{}\"",
                           driver->second.isMultiDevice, document.driver ) );
   return &driver->second;
}

// A composite is not a chip: its did is only the key that it is kept under.
void DeviceCheck::checkAddress( const DeviceDocument &document, bool isComposite ) {
   if ( isComposite )
      return;
   const auto &[did, uid, address] = std::tie( document.did, document.uid, document.address );
   const TopologyDevice *device = did ? topology_.byDid( did->number ) : nullptr;
   if ( did && !device )
      report( findings_, did->place, fmt::format( "the topology has no device {}", did->number ) );
   if ( uid ) {
      device = topology_.byUid( uid->number ); // the path to the bus is that of the component
      if ( !device )
         report( findings_, uid->place,
                 fmt::format( "the topology has no component {}", uid->number ) );
   }
   if ( device && device->address && address && address->number != *device->address )
      report( findings_, address->place,
              fmt::format( "{} is not the address in the topology, {}", address->number,
                           *device->address ) );
}

void DeviceCheck::checkParts( const DeviceDocument &document, const KindRule &kind ) {
   if ( !document.parts )
      return;
   for ( const auto &[key, partKind] : kind.nested ) {
      const Json *part = document.parts->find( key );
      if ( !part )
         report( findings_, document.parts->place(), fmt::format( "\"{}\" is missing", key ) );
      else if ( part->toText() )
         checkPart( *part, partKind );
   }
   for ( const Json::Member &part : document.parts->members() ) {
      if ( !kind.nested.contains( part.key ) )
         report( findings_, part.place,
                 fmt::format( "\"{}\" is not a part of this composite", part.key ) );
   }
}

void DeviceCheck::checkPart( const Json &text, const std::string &kind ) {
   static const Schema schema( objectsSchema );
   const auto json = parseInside( text, findings_ );
   if ( !json )
      return;
   schema.check( *json, "device", findings_ );
   check( deviceDocument( *json ), kind );
}

void DeviceCheck::claim( const DeviceDocument &document ) {
   if ( !document.did || document.driver.empty() )
      return;
   const auto [owner, isNew] =
      owners_.emplace( document.did->number, Owner{ document.driver, document.driverPlace } );
   if ( !isNew && owner->second.driver != document.driver )
      report( findings_, document.driverPlace,
              fmt::format( "device {} already has the driver \"{}\", by {}", document.did->number,
                           owner->second.driver, toText( owner->second.place ) ) );
}

} // namespace BoardFiles
