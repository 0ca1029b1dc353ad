#include "boardfiles/ObjectsFile.h"

#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <set>

namespace BoardFiles {

namespace {

BoardObject objectIn( const Json &json ) {
   const auto placeOf = [&json]( const char *key ) {
      const Json *value = json.find( key );
      return value ? value->place() : json.place();
   };
   BoardObject object{ .name = json.textOf( "name" ).value_or( "" ), .place = json.place() };
   if ( const auto type = json.textOf( "type" ) )
      object.kind = kindOf( *type );
   if ( const Json *device = json.find( "device" ) )
      object.device = deviceDocument( *device );
   object.label = json.textOf( "label" );
   object.labelPlace = placeOf( "label" );
   if ( const auto value = json.unsignedOf( "value" ) )
      object.value = static_cast<uint8_t>( *value );
   object.valuePlace = placeOf( "value" );
   object.alert = json.numberOf( "alert" );
   object.critical = json.numberOf( "critical" );
   return object;
}

void check( const BoardObject &object, Findings &findings ) {
   if ( object.alert && object.critical && *object.alert > *object.critical )
      report( findings, object.place,
              fmt::format( "\"alert\" ({}) is above \"critical\" ({})", *object.alert,
                           *object.critical ) );
   if ( object.kind != Kind::Smbus )
      return;
   if ( object.device.has_value() == object.label.has_value() )
      report( findings, object.place, "must have either \"device\" or \"label\"" );
   else if ( object.label && !object.value )
      report( findings, object.place, "\"value\" is missing beside \"label\"" );
   else if ( !object.label && object.value )
      report( findings, object.valuePlace, "\"value\" has a meaning beside \"label\" only" );
}

} // namespace

std::optional<std::vector<BoardObject>> readObjects( const std::filesystem::path &path,
                                                     Findings &findings ) {
   static const Schema schema( objectsSchema );
   const auto json = readJson( path, findings );
   if ( !json )
      return {};
   schema.check( *json, findings );
   std::vector<BoardObject> objects;
   std::set<std::string> names;
   for ( const Json &element : json->elements() ) {
      objects.push_back( objectIn( element ) );
      const BoardObject &object = objects.back();
      if ( !object.name.empty() && !names.insert( object.name ).second )
         report( findings, element.find( "name" )->place(), "another object has this name" );
      check( object, findings );
   }
   return objects;
}

} // namespace BoardFiles
