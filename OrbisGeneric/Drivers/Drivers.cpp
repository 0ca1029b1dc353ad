#include "OrbisGeneric/Drivers/DriverArgs.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Topology.h"

#include <locale>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <sstream>

namespace Drivers {

namespace {

// Drivers get every argument as text. The text of null, an array, an object or an integer of more
// than 32 bits is empty.
std::string argumentText( const Value &value ) {
   if ( value.IsInt() )
      return std::to_string( value.GetInt() );
   if ( value.IsUint() )
      return std::to_string( value.GetUint() );
   if ( value.IsString() )
      return value.GetString();
   if ( value.IsDouble() ) {
      std::ostringstream text;              // six significant digits, no trailing zeros
      text.imbue( std::locale::classic() ); // a decimal point in every host
      text << value.GetDouble();
      return text.str();
   }
   if ( value.IsFalse() )
      return "false";
   if ( value.IsTrue() )
      return "true";
   return "";
}

} // namespace

bool DriverArgs::parseJSON( const char *text ) {
   rapidjson::Document document;
   document.Parse( text );
   if ( document.HasParseError() ) {
      PL_TRACE( 0, "failed to load device from json: %s offset %d",
                rapidjson::GetParseError_En( document.GetParseError() ),
                static_cast<int>( document.GetErrorOffset() ) );
      return false;
   }
   jsonText = text;
   parseJSON( document );
   return true;
}

void DriverArgs::parseJSON( const Value &json ) {
   assert( json.IsObject() );
   assert( json.HasMember( "did" ) );
   assert( json.HasMember( "driver" ) );
   isMultiDevice = false;
   if ( json.HasMember( "isMultiDevice" ) ) {
      assert( json["isMultiDevice"].IsBool() );
      isMultiDevice = json["isMultiDevice"].IsTrue();
   }
   assert( !isMultiDevice || json.HasMember( "multiDeviceArgs" ) );
   assert( json.HasMember( "address" ) );
   Topology::fillAddressFromJSON( json["address"], address );
   uid = json.HasMember( "uid" ) ? json["uid"].GetUint() : noComponent;
   did = json["did"].GetUint();
   driver = json["driver"].GetString();
   if ( json.HasMember( "driverArgs" ) ) {
      assert( json["driverArgs"].IsObject() );
      for ( const auto &member : json["driverArgs"].GetObject() )
         driverArgs[member.name.GetString()] = argumentText( member.value );
   }
   if ( isMultiDevice ) {
      assert( json["multiDeviceArgs"].IsObject() );
      for ( const auto &member : json["multiDeviceArgs"].GetObject() )
         multiDeviceArgs[member.name.GetString()] = member.value.GetString();
   }
}

std::shared_ptr<DriverArgs> DriverArgs::fromJSON( const Value &json ) {
   auto args = std::make_shared<DriverArgs>();
   args->parseJSON( json );
   return args;
}

bool insertDriverArg( const char *json, char **out, const char *key, const char *value ) {
   rapidjson::Document document;
   document.Parse( json );
   if ( document.HasParseError() ) {
      // The text says "psu" for every kind of document.
      PL_TRACE( 0, "failed to parse psu devArgs: %s offset %d",
                rapidjson::GetParseError_En( document.GetParseError() ),
                static_cast<int>( document.GetErrorOffset() ) );
      return false;
   }
   assert( document.HasMember( "driverArgs" ) );
   assert( document["driverArgs"].IsObject() );
   auto &allocator = document.GetAllocator();
   document["driverArgs"].AddMember( Value( key, allocator ), Value( value, allocator ),
                                     allocator );
   // Never freed: the host may use the text until the process ends.
   auto *buffer = new rapidjson::StringBuffer( nullptr, 256 );
   rapidjson::Writer<rapidjson::StringBuffer> writer( *buffer );
   document.Accept( writer );
   *out = const_cast<char *>( buffer->GetString() );
   return true;
}

} // namespace Drivers
