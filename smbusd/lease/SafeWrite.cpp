#include "smbusd/lease/SafeWrite.h"

#include "smbus/Requests.h"

#include <fmt/format.h>

namespace Smbusd {

namespace {

// Nobody waits for it, and a bus that is slower than this is tried again.
constexpr uint32_t limit = 500; // ms

Smbus::TransactionRequest transactionWith( const SafeWrite &write, Smbus::RequestType type,
                                           const std::string &data ) {
   Smbus::TransactionRequest transaction;
   transaction.set_timeout_ms( limit );
   Bus::open( transaction, write.bus, write.path );
   Smbus::Request &request =
      Bus::addRequest( transaction, write.bus, write.address, type, write.number, 1 );
   if ( !data.empty() )
      request.set_data( data );
   Bus::close( transaction, write.bus, write.path );
   return transaction;
}

uint8_t within( uint32_t number, uint32_t most, const char *what ) {
   if ( number > most )
      throw LeaseError( fmt::format( "{} {} is above {}", what, number, most ) );
   return static_cast<uint8_t>( number );
}

SafeWrite safeWriteIn( const SmbusControl::SafeWrite &from ) {
   const auto bus = Bus::parseRootBusId( from.bus() );
   if ( !bus )
      throw LeaseError( fmt::format( "\"{}\" is not a bus", from.bus() ) );
   const auto path = Bus::parseSegmentPath( from.path() );
   if ( !path )
      throw LeaseError( fmt::format( "\"{}\" is not a path", from.path() ) );
   SafeWrite write{ *bus, *path, within( from.address(), Bus::maxAddress, "the address" ),
                    within( from.register_(), 0xFF, "the register" ),
                    within( from.value(), 0xFF, "the value" ) };
   if ( from.has_mask() )
      write.mask = within( from.mask(), 0xFF, "the mask" );
   return write;
}

} // namespace

Smbus::TransactionRequest SafeWrite::reading() const {
   return transactionWith( *this, Smbus::REQUEST_READ, {} );
}

Smbus::TransactionRequest SafeWrite::writing( uint8_t byte ) const {
   return transactionWith( *this, Smbus::REQUEST_WRITE,
                           std::string( 1, static_cast<char>( byte ) ) );
}

uint8_t SafeWrite::merged( uint8_t byte ) const {
   const uint8_t bits = mask.value_or( 0xFF );
   return static_cast<uint8_t>( ( byte & ~bits ) | ( value & bits ) );
}

std::string toText( const SafeWrite &write ) {
   return fmt::format( "{:#04x}{} to register {:#04x} of {:#04x}{}{} on {}", write.value,
                       write.mask ? fmt::format( " (of {:#04x})", *write.mask ) : "", write.number,
                       write.address, write.path.empty() ? "" : " behind ",
                       Bus::toText( write.path ), toString( write.bus ) );
}

std::vector<SafeWrite> safeWritesIn( const SmbusControl::Lease &lease ) {
   constexpr int most = 256;
   if ( lease.write_size() > most )
      throw LeaseError( fmt::format( "{} writes are more than {}", lease.write_size(), most ) );
   std::vector<SafeWrite> writes;
   for ( int i = 0; i < lease.write_size(); ++i )
      try {
         writes.push_back( safeWriteIn( lease.write( i ) ) );
      } catch ( const LeaseError &error ) {
         throw LeaseError(
            fmt::format( "write {} of {}: {}", i + 1, lease.write_size(), error.what() ) );
      }
   return writes;
}

} // namespace Smbusd
