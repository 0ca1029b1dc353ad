#include "Objects.h"

#include "ReplayDaemon.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <fstream>
#include <list>
#include <map>
#include <sstream>
#include <stdexcept>

namespace {

std::string textOf( const std::string &path ) {
   std::ifstream file( path );
   std::stringstream text;
   text << file.rdbuf();
   if ( !file )
      throw std::runtime_error( path + " can't be read" );
   return text.str();
}

std::string written( const rapidjson::Value &json ) {
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> writer( buffer );
   json.Accept( writer );
   return buffer.GetString();
}

// The plug-in's function with this name.
template <class Function>
Function *symbol( void *plugin, const std::string &name ) {
   void *address = dlsym( plugin, name.c_str() );
   if ( !address )
      throw std::runtime_error( dlerror() );
   return reinterpret_cast<Function *>( address );
}

// Keeps texts until the process ends, like a host.
const char *keep( std::string text ) {
   static std::list<std::string> kept;
   return kept.emplace_back( std::move( text ) ).c_str();
}

} // namespace

Objects::Objects( const std::string &path, const std::string &board ) {
   void *plugin = dlopen( path.c_str(), RTLD_NOW | RTLD_LOCAL );
   if ( !plugin )
      throw std::runtime_error( dlerror() );
   const char *topology = keep( textOf( board + "/topology.json" ) );
   rapidjson::Document objects;
   objects.Parse( textOf( board + "/objects.json" ).c_str() );

   std::map<std::string, Operations> byType;
   for ( const auto &object : objects.GetArray() ) {
      const std::string type = object["type"].GetString(), name = object["name"].GetString();
      if ( type == "rule" ) // no object, but one over several
         continue;
      const bool hasDevice = object.HasMember( "device" );
      const char *text = keep( hasDevice                     ? written( object["device"] )
                               : object.HasMember( "label" ) ? object["label"].GetString()
                                                             : "{}" );
      const std::string add = fmt::format( "pl_{}_add", type );
      fmt::print( "{}\n", name );
      const int status =
         symbol<pl_status( const char * )>( plugin, fmt::format( "pl_{}_init", type ) )( topology );
      const auto take = [&]( auto *record ) {
         ReplayDaemon::nameIs( record, fmt::format( "<record of {}>", name ) );
         ReplayDaemon::forgetOtherPointers();
         fmt::print( "-> {} {}\n", status, record ? "made" : "not made" );
         if ( record )
            for ( Operation &operation : operationsOf( name, record ) )
               byType[type].push_back( std::move( operation ) );
         return record;
      };
      if ( type == "slot" )
         take( symbol<decltype( pl_slot_add )>( plugin, add )( text ) );
      else if ( type == "led" )
         take( symbol<decltype( pl_led_add )>( plugin, add )( text ) );
      else if ( type == "temp_sensor" )
         take( symbol<decltype( pl_temp_sensor_add )>( plugin, add )(
            text, object["alert"].GetFloat(), object["critical"].GetFloat() ) );
      else if ( type == "fan" )
         take( symbol<decltype( pl_fan_add )>( plugin, add )( text ) );
      else if ( type == "psu" )
         take( symbol<decltype( pl_psu_add )>( plugin, add )( text ) );
      else if ( type == "gpio" )
         take( symbol<decltype( pl_gpio_add )>( plugin, add )( text ) );
      else if ( type == "xcvr" )
         take( symbol<decltype( pl_xcvr_add )>( plugin, add )( text ) );
      else if ( type == "smbus" )
         take( symbol<decltype( pl_smbus_add )>( plugin, add )(
            text,
            static_cast<uint8_t>( object.HasMember( "value" ) ? object["value"].GetUint() : 0 ) ) );
      else if ( type == "system" )
         system_ = take( symbol<decltype( pl_system_add )>( plugin, add )( text ) );
      else
         throw std::runtime_error( fmt::format( "{} is of no known type: {}", name, type ) );
   }
   for ( auto &[type, operations] : byType )
      operations_.push_back( std::move( operations ) );
}
