#include "smbusd/busses/linux/Messages.h"

#include "smbus/Pec.h"

#include <fmt/format.h>

#include <algorithm>

namespace Smbusd::Linux {

namespace {

uint8_t pecOver( uint8_t pec, uint8_t addressByte, std::span<const uint8_t> bytes ) {
   pec = Bus::pecStep( pec, addressByte );
   for ( const uint8_t byte : bytes )
      pec = Bus::pecStep( pec, byte );
   return pec;
}

std::vector<uint8_t> bytesToWrite( const Bus::Transfer &transfer, unsigned offsetBytes ) {
   std::vector<uint8_t> bytes;
   if ( transfer.isReceiveByte() )
      return bytes;
   for ( unsigned left = offsetBytes; left-- > 0; )
      bytes.push_back( static_cast<uint8_t>( transfer.offset >> 8 * left ) );
   if ( transfer.kind == Bus::Transfer::Kind::BlockWrite )
      bytes.push_back( static_cast<uint8_t>( transfer.length ) );
   bytes.insert( bytes.end(), transfer.data.begin(), transfer.data.end() );
   return bytes;
}

// Of the message to read, without a packet error code.
size_t bytesToRead( const Bus::Transfer &transfer ) {
   if ( transfer.isReceiveByte() )
      return 1;
   const bool reads = transfer.kind == Bus::Transfer::Kind::Read ||
                      transfer.kind == Bus::Transfer::Kind::ProcessCall;
   return reads ? transfer.length : 0;
}

} // namespace

Messages::Messages( const Bus::Transfer &transfer, unsigned offsetBytes )
   : pec_( transfer.pec ), written_( bytesToWrite( transfer, offsetBytes ) ),
     read_( bytesToRead( transfer ) ) {
   const auto addressByte = static_cast<uint8_t>( transfer.address << 1 );
   if ( pec_ ) {
      if ( read_.empty() )
         written_.push_back( pecOver( 0, addressByte, written_ ) );
      else
         read_.push_back( 0 );
   }
   const auto add = [&]( std::vector<uint8_t> &bytes, uint16_t flags ) {
      if ( !bytes.empty() )
         messages_.push_back( { .addr = transfer.address,
                                .flags = flags,
                                .len = static_cast<uint16_t>( bytes.size() ),
                                .buf = bytes.data() } );
   };
   add( written_, 0 );
   add( read_, I2C_M_RD );
}

bool Messages::tooLong() const {
   return std::max( written_.size(), read_.size() ) > maxMessageBytes;
}

std::string Messages::data( std::string &error ) const {
   std::string data( read_.begin(), read_.end() );
   if ( !pec_ || data.empty() )
      return data;
   data.pop_back();
   const auto addressByte = static_cast<uint8_t>( messages_.back().addr << 1 );
   uint8_t expected = written_.empty() ? 0 : pecOver( 0, addressByte, written_ );
   expected = pecOver( expected, addressByte | 1, std::span( read_ ).first( read_.size() - 1 ) );
   if ( expected == read_.back() )
      return data;
   error = fmt::format( "PEC is {:#04x}, expected {:#04x}", read_.back(), expected );
   return {};
}

} // namespace Smbusd::Linux
