#include "boardfiles/DeviceDocument.h"

#include <cstdlib>

namespace BoardFiles {

namespace {

std::optional<DeviceDocument::Id> idIn( const Json *json ) {
   const auto number = json ? json->toUnsigned() : std::nullopt;
   return number ? std::optional( DeviceDocument::Id{ *number, json->place() } ) : std::nullopt;
}

std::optional<Json> objectIn( const Json *json ) {
   return json && json->type() == Json::Type::Object ? std::optional( *json ) : std::nullopt;
}

} // namespace

std::optional<double> DeviceDocument::argumentNumber( std::string_view name ) const {
   const Json *value = argument( name );
   if ( value && value->toText() )
      return std::strtod( std::string( *value->toText() ).c_str(), nullptr );
   return value ? value->toNumber() : std::nullopt;
}

DeviceDocument deviceDocument( const Json &json ) {
   DeviceDocument document{ .text = std::string( json.source() ), .place = json.place() };
   document.did = idIn( json.find( "did" ) );
   document.uid = idIn( json.find( "uid" ) );
   if ( const Json *address = json.find( "address" ) ) {
      document.address = idIn( address->find( "address" ) );
      document.addressSize = address->unsignedOf( "addrSize" ).value_or( 1 );
   }
   document.driver = json.textOf( "driver" ).value_or( "" );
   document.driverPlace = json.find( "driver" ) ? json.find( "driver" )->place() : json.place();
   const Json *isMultiDevice = json.find( "isMultiDevice" );
   document.isMultiDevice = isMultiDevice && isMultiDevice->isTrue();
   document.isMultiDevicePlace = isMultiDevice ? isMultiDevice->place() : json.place();
   document.driverArgs = objectIn( json.find( "driverArgs" ) );
   document.parts = objectIn( json.find( "multiDeviceArgs" ) );
   return document;
}

} // namespace BoardFiles
