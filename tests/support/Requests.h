// Messages of a client.
#pragma once

#include "OrbisUtil/Smbus.pb.h"

#include <cstdint>
#include <string>

namespace TestSupport {

// A request on scd(4):1:2 with all required fields.
inline Smbus::Request request( Smbus::RequestType type, uint8_t address, uint32_t offset,
                               uint32_t length, const std::string &data = {} ) {
   Smbus::Request made;
   made.set_addr( offset | uint64_t{ address } << 32 | uint64_t{ 2 } << 39 | uint64_t{ 1 } << 46 |
                  uint64_t{ 1 } << 57 );
   made.set_pci( 4 );
   made.set_mastertype( Smbus::MASTER_SCD );
   made.set_type( type );
   made.set_length( length );
   made.set_pec( false );
   if ( !data.empty() )
      made.set_data( data );
   return made;
}

inline Smbus::Request read( uint8_t address, uint32_t offset, uint32_t length ) {
   return request( Smbus::REQUEST_READ, address, offset, length );
}

inline Smbus::Request sendByte( uint8_t address, uint8_t byte ) {
   return request( Smbus::REQUEST_WRITE, address, byte, 0 );
}

template <typename... Requests>
Smbus::TransactionRequest transaction( const Requests &...requests ) {
   Smbus::TransactionRequest made;
   ( ( *made.add_request() = requests ), ... );
   return made;
}

} // namespace TestSupport
