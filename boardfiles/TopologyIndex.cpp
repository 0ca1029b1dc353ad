#include "boardfiles/TopologyIndex.h"

#include "boardfiles/Json.h"

#include <algorithm>
#include <fmt/format.h>

namespace BoardFiles {

using rapidjson::Value;

namespace {

// Calls f( element, place ) for the elements of a list that is a member of `parent`.
template <class F>
void forEach( const Value &parent, const char *key, const Place &place, const F &f ) {
   size_t i = 0;
   for ( const Value &element : Json::elements( Json::find( &parent, key ) ) )
      f( element, place / key / i++ );
}

} // namespace

TopologyIndex::TopologyIndex( const Value &media, const Place &place, const DriverTable &drivers,
                              Findings &findings )
   : drivers_( drivers ), findings_( findings ) {
   size_t i = 0;
   for ( const Value &medium : Json::elements( &media ) ) {
      const Place at = place / i++;
      const auto ham = Json::toText( Json::find( &medium, "ham" ) );
      if ( ham &&
           std::find( drivers.hams.begin(), drivers.hams.end(), *ham ) == drivers.hams.end() )
         report( findings, at / "ham",
                 fmt::format( "the plug-in has no access method \"{}\"", *ham ) );
      if ( const Value *bus = Json::find( &medium, "bus" ) )
         addBus( *bus, at / "bus" );
      Ids accelerators;
      forEach( medium, "accelerators", at, [&]( const Value &accelerator, const Place &there ) {
         takeId( accelerators, Json::find( &accelerator, "id" ), "accelerator id", there / "id" );
         addBusses( Json::find( &accelerator, "busses" ), there / "busses" );
      } );
   }
}

void TopologyIndex::addBusses( const Value *busses, const Place &place ) {
   Ids ids;
   size_t i = 0;
   for ( const Value &bus : Json::elements( busses ) ) {
      const Place at = place / i++;
      takeId( ids, Json::find( &bus, "id" ), "bus id", at / "id" );
      addBus( bus, at );
   }
}

void TopologyIndex::addBus( const Value &bus, const Place &place ) {
   forEach( bus, "devices", place,
            [&]( const Value &device, const Place &at ) { addDevice( device, at ); } );
   forEach( bus, "muxes", place, [&]( const Value &mux, const Place &at ) {
      checkMux( Json::toUnsigned( Json::find( &mux, "did" ) ), Json::find( &bus, "devices" ), at );
      addBusses( Json::find( &mux, "busses" ), at / "busses" );
   } );
}

void TopologyIndex::addDevice( const Value &json, const Place &place ) {
   const Value *didValue = Json::find( &json, "did" );
   const auto did = Json::toUnsigned( didValue );
   if ( !did || !takeId( dids_, didValue, "did", place / "did" ) )
      return;
   const auto label = Json::toText( Json::find( &json, "label" ) );
   Place at = place;
   at.object = label.value_or( "" );
   devices_.insert(
      { *did,
        { &json, at, Json::toUnsigned( Json::find( Json::find( &json, "address" ), "address" ) ),
          Json::find( &json, "driver" ) != nullptr } } );
   if ( label && !didOfLabel_.emplace( *label, *did ).second )
      report( findings_, place / "label", fmt::format( "label \"{}\" stands twice", *label ) );
   forEach( json, "components", place, [&]( const Value &component, const Place &there ) {
      const Value *uid = Json::find( &component, "uid" );
      if ( uid && uid->IsUint() && takeId( uids_, uid, "uid", there / "uid" ) )
         didOfUid_[uid->GetUint()] = *did;
   } );
}

void TopologyIndex::checkMux( std::optional<uint32_t> did, const Value *devices,
                              const Place &place ) {
   if ( !did )
      return;
   for ( const Value &device : Json::elements( devices ) ) {
      if ( Json::toUnsigned( Json::find( &device, "did" ) ) != did )
         continue;
      const auto name = Json::toText( Json::find( &device, "driver" ) );
      const auto driver = name ? drivers_.drivers.find( *name ) : drivers_.drivers.end();
      if ( !name )
         report( findings_, place / "did",
                 fmt::format( "device {} carries no driver, so it can't be a mux's chip", *did ) );
      else if ( driver != drivers_.drivers.end() && !driver->second.makes.contains( "mux" ) )
         report( findings_, place / "did",
                 fmt::format( "driver \"{}\" of device {} drives no muxes", *name, *did ) );
      return;
   }
   report( findings_, place / "did",
           fmt::format( "no device {} on the bus of this mux: its chip must stand there", *did ) );
}

bool TopologyIndex::takeId( Ids &taken, const Value *id, const char *what, const Place &place ) {
   if ( !id || !id->IsUint() )
      return false;
   const auto [first, isNew] = taken.emplace( id->GetUint(), place );
   if ( !isNew )
      report( findings_, place,
              fmt::format( "{} {} stands twice, first at {}", what, id->GetUint(),
                           first->second.pointerText() ) );
   return isNew;
}

const TopologyIndex::Device *TopologyIndex::byDid( uint32_t did ) const {
   const auto found = devices_.find( did );
   return found == devices_.end() ? nullptr : &found->second;
}

const TopologyIndex::Device *TopologyIndex::byUid( uint32_t uid ) const {
   const auto found = didOfUid_.find( uid );
   return found == didOfUid_.end() ? nullptr : byDid( found->second );
}

const TopologyIndex::Device *TopologyIndex::byLabel( std::string_view label ) const {
   const auto found = didOfLabel_.find( label );
   return found == didOfLabel_.end() ? nullptr : byDid( found->second );
}

} // namespace BoardFiles
