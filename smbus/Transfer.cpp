#include "smbus/Transfer.h"

#include <fmt/format.h>

namespace Bus {

namespace {

std::string bytes( unsigned count ) {
   return fmt::format( "{} byte{}", count, count == 1 ? "" : "s" );
}

} // namespace

std::string describe( const Transfer &transfer ) {
   const auto from = [&]( const std::string &what, const char *direction ) {
      return fmt::format( "{} {} {:#04x} register {:#04x}", what, direction, transfer.address,
                          transfer.offset );
   };
   switch ( transfer.kind ) {
   case Transfer::Kind::Read:
      if ( transfer.isReceiveByte() )
         return fmt::format( "receive byte from {:#04x}", transfer.address );
      return from( "read of " + bytes( transfer.length ), "from" );
   case Transfer::Kind::Write:
      if ( transfer.isSendByte() )
         return fmt::format( "send byte {:#04x} to {:#04x}", transfer.offset, transfer.address );
      return from( "write of " + bytes( transfer.length ), "to" );
   case Transfer::Kind::ProcessCall:
      return from( "process call", "to" );
   case Transfer::Kind::BlockRead:
      return from( "block read", "from" );
   case Transfer::Kind::BlockWrite:
      return from( "block write of " + bytes( transfer.length ), "to" );
   }
   return {};
}

std::string describe( const Transaction &transaction, size_t index, std::string_view reason ) {
   return fmt::format( "request {} of {}: {} on {}: {}", index + 1, transaction.transfers.size(),
                       describe( transaction.transfers[index] ), toString( transaction.bus ),
                       reason );
}

} // namespace Bus
