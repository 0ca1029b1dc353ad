#include "orbis-smbus/Output.h"

#include "orbis-smbus/Formatting.h"
#include "smbus/RootBus.h"

#include <fmt/format.h>

namespace SmbusClient {

namespace {

unsigned byteAt( const std::string &data, size_t index ) {
   return static_cast<unsigned char>( data[index] );
}

unsigned wordOf( const std::string &data ) { return byteAt( data, 0 ) | byteAt( data, 1 ) << 8; }

bool isWord( const Size &size, const std::string &data ) {
   return size.form == Size::Form::Word && data.size() == 2;
}

void addReading( Json &json, const Size &size, const Reading &reading ) {
   if ( !reading.error.empty() )
      return add( json, "error", reading.error );
   addBytes( json, "data", reading.data );
   if ( isWord( size, reading.data ) ) {
      json.Key( "word" );
      json.Uint( wordOf( reading.data ) );
   }
}

char printable( const std::string &data ) {
   const unsigned byte = byteAt( data, 0 );
   return byte >= 0x20 && byte < 0x7F ? static_cast<char>( byte ) : '.';
}

std::string dumpTable( const Size &size, const std::map<uint32_t, Reading> &readings ) {
   const bool words = size.form == Size::Form::Word;
   const uint32_t perRow = words ? 8 : 16;
   const size_t digits = words ? 4 : 2;
   std::string table = "     ";
   for ( uint32_t column = 0; column < perRow; ++column )
      table += fmt::format( "{:>{}x} ", column, digits );
   table += '\n';
   const uint32_t first = readings.begin()->first / perRow * perRow;
   for ( uint32_t row = first; row <= readings.rbegin()->first; row += perRow ) {
      table += fmt::format( "{:03x}: ", row );
      std::string text;
      for ( uint32_t offset = row; offset < row + perRow; ++offset ) {
         const auto found = readings.find( offset );
         const bool asked = found != readings.end();
         if ( asked && found->second.error.empty() ) {
            const std::string &data = found->second.data;
            table += words ? fmt::format( "{:04x} ", wordOf( data ) )
                           : fmt::format( "{:02x} ", byteAt( data, 0 ) );
            text += printable( data );
         } else {
            table += std::string( digits, asked ? 'X' : ' ' ) + ' ';
            text += asked ? 'X' : ' ';
         }
      }
      table += words ? "\n" : "   " + text + '\n';
   }
   return table;
}

} // namespace

bool isAbsent( const Reading &reading ) {
   return reading.error.ends_with( Bus::noAddressAcknowledge );
}

std::string formatReading( const Target &target, std::optional<uint32_t> offset, const Size &size,
                           const std::string &data, bool json ) {
   if ( json )
      return jsonObject( [&]( Json &object ) {
         add( object, "address", toString( target ) );
         if ( offset ) {
            object.Key( "register" );
            object.Uint( *offset );
         }
         addReading( object, size, { data, {} } );
      } );
   if ( isWord( size, data ) )
      return fmt::format( "{:#06x}\n", wordOf( data ) );
   std::string line;
   for ( size_t i = 0; i < data.size(); ++i )
      line += fmt::format( "{}{:#04x}", i ? " " : "", byteAt( data, i ) );
   return line + "\n";
}

std::string formatWritten( const Target &target, bool json ) {
   if ( !json )
      return {};
   return jsonObject( [&]( Json &object ) { add( object, "address", toString( target ) ); } );
}

std::string formatFailure( const std::string &error, bool json ) {
   if ( !json )
      return {};
   return jsonObject( [&]( Json &object ) { add( object, "error", error ); } );
}

std::string formatDump( const Target &target, const Size &size,
                        const std::map<uint32_t, Reading> &readings, bool json ) {
   if ( !json )
      return dumpTable( size, readings );
   return jsonObject( [&]( Json &object ) {
      add( object, "address", toString( target ) );
      object.Key( "registers" );
      object.StartArray();
      for ( const auto &[offset, reading] : readings ) {
         object.StartObject();
         object.Key( "register" );
         object.Uint( offset );
         addReading( object, size, reading );
         object.EndObject();
      }
      object.EndArray();
   } );
}

std::string formatScan( const Bus::RootBusId &bus, const std::map<uint8_t, Reading> &readings,
                        bool json ) {
   if ( json )
      return jsonObject( [&]( Json &object ) {
         add( object, "bus", toString( bus ) );
         object.Key( "found" );
         object.StartArray();
         for ( const auto &[address, reading] : readings ) {
            if ( isAbsent( reading ) )
               continue;
            object.StartObject();
            object.Key( "address" );
            object.Uint( address );
            if ( !reading.error.empty() )
               add( object, "error", reading.error );
            object.EndObject();
         }
         object.EndArray();
      } );
   std::string table = "    ";
   std::string errors;
   for ( unsigned column = 0; column < 16; ++column )
      table += fmt::format( " {:2x}", column );
   for ( unsigned address = 0; address < 0x80; ++address ) {
      if ( address % 16 == 0 )
         table += fmt::format( "\n{:02x}: ", address );
      const auto found = readings.find( static_cast<uint8_t>( address ) );
      if ( found == readings.end() )
         table += "   ";
      else if ( found->second.error.empty() )
         table += fmt::format( " {:02x}", address );
      else
         table += isAbsent( found->second ) ? " --" : " ??";
      if ( found != readings.end() && !found->second.error.empty() && !isAbsent( found->second ) )
         errors += found->second.error + '\n';
   }
   return table + '\n' + errors;
}

} // namespace SmbusClient
