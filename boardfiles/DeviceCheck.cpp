#include "boardfiles/DeviceCheck.h"

#include "boardfiles/ArgumentCheck.h"
#include "boardfiles/Json.h"
#include "boardfiles/Schema.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace BoardFiles {

using rapidjson::Value;

namespace {

bool fits( const Variant &variant, const Value *args ) {
   if ( variant.argument.empty() )
      return true;
   const Value *value = Json::find( args, variant.argument.c_str() );
   return value && ( !variant.is || Json::toText( value ) == variant.is );
}

} // namespace

DeviceCheck::DeviceCheck( const DriverTable &drivers, const TopologyIndex &topology,
                          Findings &findings )
   : drivers_( drivers ), topology_( topology ), findings_( findings ) {
   for ( const auto &[did, device] : topology.devices() )
      if ( device.inlined )
         checkInline( did, device );
}

void DeviceCheck::checkInline( uint32_t did, const TopologyIndex::Device &device ) {
   if ( const auto name = Json::toText( Json::find( device.json, "driver" ) ) )
      claim( did, *name, device.place / "driver" );
   const DriverRule *driver = checkDriver( *device.json, device.place );
   if ( driver && driver->isMultiDevice )
      report( findings_, device.place / "driver", "a composite can't stand in the topology" );
   checkWhereItStands( *device.json, false, device.place );
}

void DeviceCheck::check( const Value &document, std::string_view kind, const Place &place ) {
   const DriverRule *driver = checkDriver( document, place );
   checkWhereItStands( document, driver && driver->isMultiDevice, place );
   const auto name = Json::toText( Json::find( &document, "driver" ) );
   const auto did = Json::toUnsigned( Json::find( &document, "did" ) );
   if ( did && name )
      claim( *did, *name, place / "driver" );
   if ( !driver )
      return;
   const auto rule = driver->makes.find( kind );
   if ( rule == driver->makes.end() ) {
      report( findings_, place / "driver",
              fmt::format( "driver \"{}\" can't make a {}", *name, kind ) );
      return;
   }
   checkArguments( Json::find( &document, "driverArgs" ), *driver, rule->second, place, findings_ );
   if ( did )
      checkVariant( document, *did, *driver, kind, place );
   if ( driver->isMultiDevice )
      checkParts( document, rule->second, place );
}

void DeviceCheck::checkLabel( std::string_view label, std::string_view kind, const Place &place ) {
   const TopologyIndex::Device *device = topology_.byLabel( label );
   if ( !device )
      report( findings_, place, fmt::format( "the topology has no label \"{}\"", label ) );
   else if ( !device->inlined )
      report( findings_, place,
              fmt::format( "the topology device \"{}\" carries no driver, so its address would "
                           "not be known",
                           label ) );
   else if ( const DriverRule *driver = checkDriver( *device->json, device->place );
             driver && !driver->makes.contains( kind ) )
      report(
         findings_, place,
         fmt::format( "the driver of the topology device \"{}\" can't make a {}", label, kind ) );
}

void DeviceCheck::checkSystem( const Place &place ) {
   for ( const SystemDevice &wanted : drivers_.system ) {
      const TopologyIndex::Device *device = topology_.byLabel( wanted.label );
      if ( !device ) {
         report( findings_, place,
                 fmt::format( "the topology has no label \"{}\"", wanted.label ) );
         continue;
      }
      const auto driver = Json::toText( Json::find( device->json, "driver" ) );
      if ( !wanted.driver.empty() && driver != wanted.driver )
         report(
            findings_, device->place,
            fmt::format( "must name the driver \"{}\" for the system object", wanted.driver ) );
   }
}

// The first document of a did makes the driver object, in the order of the file.
void DeviceCheck::checkVariant( const Value &document, uint32_t did, const DriverRule &driver,
                                std::string_view kind, const Place &place ) {
   const auto known = makers_.find( did );
   if ( known == makers_.end() ) {
      const Value *args = Json::find( &document, "driverArgs" );
      const auto variant =
         std::find_if( driver.variants.begin(), driver.variants.end(),
                       [args]( const Variant &one ) { return fits( one, args ); } );
      makers_[did] = { variant == driver.variants.end() ? nullptr : &*variant, place };
   } else if ( driver.isMultiDevice ) {
      report( findings_, place / "did",
              fmt::format( "composite {} stands already, made by {}:{}", did,
                           known->second.place.file, known->second.place.pointerText() ) );
   }
   const Maker &maker = makers_[did];
   if ( maker.variant && std::find( maker.variant->kinds.begin(), maker.variant->kinds.end(),
                                    kind ) == maker.variant->kinds.end() )
      report( findings_, place,
              fmt::format( "device {} can't make a {} as it is made by {}:{}: its arguments make "
                           "it fit for {} only",
                           did, kind, maker.place.file, maker.place.pointerText(),
                           fmt::join( maker.variant->kinds, ", " ) ) );
}

// The driver's rule; null, and a finding, when there is no such driver.
const DriverRule *DeviceCheck::checkDriver( const Value &document, const Place &place ) {
   const bool saysComposite = Json::isTrue( Json::find( &document, "isMultiDevice" ) );
   if ( saysComposite && !Json::find( &document, "multiDeviceArgs" ) )
      report( findings_, place, "\"multiDeviceArgs\" is missing" );
   const auto name = Json::toText( Json::find( &document, "driver" ) );
   if ( !name )
      return nullptr;
   const auto driver = drivers_.drivers.find( *name );
   if ( driver == drivers_.drivers.end() ) {
      report( findings_, place / "driver", fmt::format( "there is no driver \"{}\"", *name ) );
      return nullptr;
   }
   if ( driver->second.isMultiDevice != saysComposite )
      report( findings_, place / "isMultiDevice",
              fmt::format( "must be {} for driver \"{}\"", driver->second.isMultiDevice, *name ) );
   return &driver->second;
}

// A composite is no chip: its did is only the key that it is kept under.
void DeviceCheck::checkWhereItStands( const Value &document, bool isComposite,
                                      const Place &place ) {
   if ( isComposite )
      return;
   const auto did = Json::toUnsigned( Json::find( &document, "did" ) );
   const auto uid = Json::toUnsigned( Json::find( &document, "uid" ) );
   const TopologyIndex::Device *device = did ? topology_.byDid( *did ) : nullptr;
   if ( did && !device )
      report( findings_, place / "did", fmt::format( "the topology has no device {}", *did ) );
   if ( uid ) {
      device = topology_.byUid( *uid ); // the path to the bus is that of the component
      if ( !device )
         report( findings_, place / "uid",
                 fmt::format( "the topology has no component {}", *uid ) );
   }
   const auto address =
      Json::toUnsigned( Json::find( Json::find( &document, "address" ), "address" ) );
   if ( device && device->address && address && *address != *device->address )
      report(
         findings_, place / "address" / "address",
         fmt::format( "{} is unlike the topology, which says {}", *address, *device->address ) );
}

void DeviceCheck::checkParts( const Value &document, const KindRule &kind, const Place &place ) {
   const Value *parts = Json::find( &document, "multiDeviceArgs" );
   const Place there = place / "multiDeviceArgs";
   for ( const auto &[key, partKind] : kind.nested ) {
      const Value *part = Json::find( parts, key.c_str() );
      if ( const auto text = Json::toText( part ) )
         checkPart( std::string( *text ), partKind, there / key );
      else if ( parts && !part )
         report( findings_, there, fmt::format( "\"{}\" is missing", key ) );
   }
   for ( const auto &[key, text] : Json::members( parts ) )
      if ( !kind.nested.contains( key.GetString() ) )
         report( findings_, there / key.GetString(), "is no part of this composite" );
}

void DeviceCheck::checkPart( const std::string &text, const std::string &kind,
                             const Place &place ) {
   static const Schema schema( objectsSchema, "device" );
   const auto document = Json::parse( text, place, findings_ );
   if ( !document )
      return;
   schema.check( *document, place, findings_ );
   check( *document, kind, place );
}

void DeviceCheck::claim( uint32_t did, std::string_view driver, const Place &place ) {
   const auto [owner, isNew] = owners_.emplace( did, Owner{ std::string( driver ), place } );
   if ( !isNew && owner->second.driver != driver )
      report( findings_, place,
              fmt::format( "device {} is driven by \"{}\" already, in {}:{}", did,
                           owner->second.driver, owner->second.place.file,
                           owner->second.place.pointerText() ) );
}

} // namespace BoardFiles
