#include "boardfiles/RegistersFile.h"

#include "boardfiles/Nearest.h"
#include "boardfiles/Schema.h"

#include <fmt/format.h>

#include <algorithm>

namespace BoardFiles {
namespace {

bool isTrue( const Json &json, std::string_view key ) {
   const Json *flag = json.find( key );
   return flag && flag->isTrue();
}

std::vector<ChipRegister> registersIn( const Json &list, Findings &findings ) {
   std::vector<ChipRegister> registers;
   for ( const Json &json : list.elements() ) {
      const ChipRegister one{ .number = static_cast<uint8_t>(
                                 json.unsignedOf( "register" ).value_or( 0 ) ),
                              .bytes = json.unsignedOf( "bytes" ).value_or( 1 ),
                              .name = json.textOf( "name" ).value_or( "" ),
                              .highByteFirst = isTrue( json, "highByteFirst" ),
                              .isFree = isTrue( json, "free" ),
                              .isWhole = isTrue( json, "whole" ) };
      const auto same =
         std::find_if( registers.begin(), registers.end(), [&one]( const ChipRegister &earlier ) {
            return earlier.number == one.number;
         } );
      if ( same != registers.end() )
         report( findings, json.place(),
                 fmt::format( "register {:#04x} has an entry already, \"{}\"", one.number,
                              same->name ) );
      registers.push_back( one );
   }
   return registers;
}

} // namespace

ChipRegisters readRegisters( const std::filesystem::path &path, const DriverTable &drivers,
                             Findings &findings ) {
   static const Schema schema( registersSchema );
   const auto json = readJson( path, findings );
   if ( !json )
      return {};
   const size_t before = findings.size();
   schema.check( *json, findings );
   if ( findings.size() > before )
      return {};
   std::vector<std::string> names;
   for ( const auto &[name, rule] : drivers.drivers )
      names.push_back( name );
   ChipRegisters registers;
   for ( const auto &[driver, list, place] : json->members() ) {
      if ( !drivers.drivers.contains( driver ) )
         report( findings, place,
                 fmt::format( "the plug-in has no driver \"{}\"{}", driver,
                              didYouMean( driver, names ) ) );
      registers[driver] = registersIn( list, findings );
   }
   return registers;
}

} // namespace BoardFiles
