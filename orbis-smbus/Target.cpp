#include "orbis-smbus/Target.h"

#include <fmt/format.h>

namespace SmbusClient {

namespace {

constexpr uint32_t maxAddress = 0x7F;

Smbus::Request &add( Smbus::TransactionRequest &transaction, const Bus::RootBusId &bus,
                     uint8_t address, Smbus::RequestType type, uint32_t offset, uint32_t length ) {
   Smbus::Request &request = *transaction.add_request();
   request.set_addr( offset | uint64_t{ address } << 32 | uint64_t{ bus.bus } << 39 |
                     uint64_t{ bus.accelerator } << 46 | uint64_t{ 1 } << 57 );
   request.set_pci( bus.pci );
   request.set_mastertype( static_cast<Smbus::MasterType>( bus.master ) );
   request.set_type( type );
   request.set_length( length );
   request.set_pec( false );
   return request;
}

} // namespace

Smbus::Request &Target::addTo( Smbus::TransactionRequest &transaction, Smbus::RequestType type,
                               uint32_t offset, uint32_t length ) const {
   Smbus::Request &request = add( transaction, bus, address, type, offset, length );
   request.set_pec( pec );
   return request;
}

void Target::open( Smbus::TransactionRequest &transaction ) const {
   for ( const Via &via : vias )
      add( transaction, bus, via.address, Smbus::REQUEST_WRITE, via.select, 0 );
}

void Target::close( Smbus::TransactionRequest &transaction ) const {
   for ( auto via = vias.rbegin(); via != vias.rend(); ++via )
      add( transaction, bus, via->address, Smbus::REQUEST_WRITE, 0, 0 );
}

std::optional<Target> parseTarget( std::string_view text ) {
   const size_t last = text.rfind( ':' );
   if ( last == text.npos )
      return {};
   const auto bus = Bus::parseRootBusId( text.substr( 0, last ) );
   const auto address = Bus::parseNumber( text.substr( last + 1 ), maxAddress );
   if ( !bus || !address )
      return {};
   Target target;
   target.bus = *bus;
   target.address = static_cast<uint8_t>( *address );
   return target;
}

std::optional<Via> parseVia( std::string_view text ) {
   const size_t equals = text.find( '=' );
   if ( equals == text.npos )
      return {};
   const auto address = Bus::parseNumber( text.substr( 0, equals ), maxAddress );
   const auto select = Bus::parseNumber( text.substr( equals + 1 ), 0xFF );
   if ( !address || !select )
      return {};
   return Via{ static_cast<uint8_t>( *address ), static_cast<uint8_t>( *select ) };
}

std::optional<Size> parseSize( std::string_view text ) {
   constexpr uint32_t most = 8192; // the server's limit for one request
   if ( text == "byte" )
      return Size{ Size::Form::Bytes, 1 };
   if ( text == "word" )
      return Size{ Size::Form::Word, 2 };
   if ( text == "block" )
      return Size{ Size::Form::Block, 0 };
   const auto count = Bus::parseNumber( text, most );
   if ( !count || *count == 0 )
      return {};
   return Size{ Size::Form::Bytes, *count };
}

std::string toString( const Target &target ) {
   return fmt::format( "{}:{:#04x}", toString( target.bus ), target.address );
}

} // namespace SmbusClient
