#include "support/FakeMemory.h"

#include <fmt/format.h>

namespace Host {

FakeMemory::FakeMemory() {
   ops_.size = sizeof ops_;
   ops_.i2c_block_read = []( pl_smbus *record, uint8_t command, uint8_t *bytes, unsigned size ) {
      return of( record ).read( command, bytes, size );
   };
   ops_.i2c_block_write = []( pl_smbus *record, uint8_t command, const uint8_t *bytes,
                              unsigned size ) {
      return of( record ).write( command, bytes, size );
   };
   record_.ops = &ops_;
   record_.priv = this;
}

bool FakeMemory::passes( const std::string &transfer ) {
   before( transfer );
   if ( misses == 0 ) {
      transfers.push_back( transfer );
      return true;
   }
   --misses;
   transfers.push_back( transfer + " missed" );
   return false;
}

uint8_t FakeMemory::at( unsigned number ) const {
   const auto in = [number]( const std::map<unsigned, uint8_t> &bytes ) {
      const auto found = bytes.find( number );
      return found == bytes.end() ? uint8_t{ 0 } : found->second;
   };
   if ( number == 126 )
      return bank;
   if ( number == 127 )
      return page;
   const auto shown = pages.find( page );
   return number < 128 ? in( lower ) : shown == pages.end() ? uint8_t{ 0 } : in( shown->second );
}

pl_status FakeMemory::read( uint8_t command, uint8_t *bytes, unsigned size ) {
   if ( !passes( fmt::format( "read {}+{}", command, size ) ) )
      return PL_STATUS_TRANSACTION;
   if ( size > longest )
      return PL_STATUS_SOCKET; // as a proxy does where fewer bytes come
   for ( unsigned i = 0; i < size; ++i )
      bytes[i] = at( command + i );
   return PL_STATUS_OK;
}

pl_status FakeMemory::write( uint8_t command, const uint8_t *bytes, unsigned size ) {
   std::string transfer = fmt::format( "write {}", command );
   for ( unsigned i = 0; i < size; ++i )
      transfer += fmt::format( " {:02x}", bytes[i] );
   if ( !passes( transfer ) )
      return PL_STATUS_TRANSACTION;
   for ( unsigned i = 0; i < size; ++i )
      if ( command + i == 126 )
         bank = bytes[i];
      else if ( command + i == 127 )
         page = bytes[i];
   return PL_STATUS_OK;
}

} // namespace Host
