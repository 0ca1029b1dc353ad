#include "boardfiles/Board.h"

#include "boardfiles/DeviceCheck.h"
#include "boardfiles/Json.h"
#include "boardfiles/Schema.h"

#include <cstdlib>
#include <fmt/format.h>
#include <set>

namespace BoardFiles {
namespace {

using rapidjson::Value;

void checkObject( const Value &object, const Place &place, DeviceCheck &devices,
                  Findings &findings ) {
   const auto type = Json::toText( Json::find( &object, "type" ) );
   const Value *device = Json::find( &object, "device" );
   const auto label = Json::toText( Json::find( &object, "label" ) );
   if ( !type || !kindOf( *type ) )
      return;
   if ( device )
      devices.check( *device, *type, place / "device" );
   if ( type == nameOf( Kind::System ) )
      devices.checkSystem( place );
   if ( type != nameOf( Kind::Smbus ) )
      return;
   if ( !device == !label )
      report( findings, place, "must have either \"device\" or \"label\"" );
   else if ( label ) {
      devices.checkLabel( *label, *type, place / "label" );
      if ( !Json::find( &object, "value" ) )
         report( findings, place, "\"value\" is missing beside \"label\"" );
   } else if ( Json::find( &object, "value" ) )
      report( findings, place / "value", "has a meaning beside \"label\" only" );
}

void checkObjects( const Value &objects, const Place &root, DeviceCheck &devices,
                   Findings &findings ) {
   std::set<std::string, std::less<>> names;
   size_t i = 0;
   for ( const Value &object : Json::elements( &objects ) ) {
      Place place = root / i++;
      place.object = Json::toText( Json::find( &object, "name" ) ).value_or( "" );
      if ( !place.object.empty() && !names.insert( place.object ).second )
         report( findings, place / "name", "another object has this name" );
      checkObject( object, place, devices, findings );
   }
}

double toNumber( const Value *value ) {
   if ( const auto text = Json::toText( value ) )
      return std::strtod( std::string( *text ).c_str(), nullptr );
   return value && value->IsNumber() ? value->GetDouble() : 0;
}

// What a device document tells of an object beside what the plug-in makes of it.
void describeDevice( const Value &device, const DriverTable &table, ObjectDescription &object ) {
   object.did = Json::toUnsigned( Json::find( &device, "did" ) );
   object.address =
      Json::toUnsigned( Json::find( Json::find( &device, "address" ), "address" ) ).value_or( 0 );
   const auto driver = table.drivers.find( *Json::toText( Json::find( &device, "driver" ) ) );
   const std::string &fullScale =
      driver->second.makes.find( nameOf( object.kind ) )->second.fullScale;
   if ( !fullScale.empty() )
      object.fullScale =
         toNumber( Json::find( Json::find( &device, "driverArgs" ), fullScale.c_str() ) );
}

ObjectDescription describe( const Value &object, const DriverTable &table ) {
   ObjectDescription description{ .kind = *kindOf( *Json::toText( Json::find( &object, "type" ) ) ),
                                  .name = std::string(
                                     *Json::toText( Json::find( &object, "name" ) ) ) };
   if ( const Value *device = Json::find( &object, "device" ) ) {
      description.text = Json::write( *device );
      describeDevice( *device, table, description );
   }
   if ( const auto label = Json::toText( Json::find( &object, "label" ) ) )
      description.text = *label;
   if ( const Value *alert = Json::find( &object, "alert" ) )
      description.alert = static_cast<float>( alert->GetDouble() );
   if ( const Value *critical = Json::find( &object, "critical" ) )
      description.critical = static_cast<float>( critical->GetDouble() );
   if ( const auto value = Json::toUnsigned( Json::find( &object, "value" ) ) )
      description.value = static_cast<uint8_t>( *value );
   return description;
}

} // namespace

std::optional<Board> loadBoard( const std::filesystem::path &folder,
                                const std::filesystem::path &drivers, Findings &findings ) {
   const size_t before = findings.size();
   auto topology = Json::load( folder / "topology.json", findings );
   auto objects = Json::load( folder / "objects.json", findings );
   auto table = loadDriverTable( drivers, findings );
   if ( topology )
      ListSchema( topologySchema ).check( topology->document, topology->root, findings );
   if ( objects )
      ListSchema( objectsSchema ).check( objects->document, objects->root, findings );
   if ( !topology || !objects || !table )
      return {};
   const TopologyIndex index( topology->document, topology->root, *table, findings );
   DeviceCheck devices( *table, index, findings );
   checkObjects( objects->document, objects->root, devices, findings );
   if ( findings.size() != before )
      return {};
   Board board{ .folder = folder.string(),
                .topology = std::move( topology->text ),
                .traces = table->traces };
   for ( const Value &object : objects->document.GetArray() )
      board.objects.push_back( describe( object, *table ) );
   return board;
}

} // namespace BoardFiles
