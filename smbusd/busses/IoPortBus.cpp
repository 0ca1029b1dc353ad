#include "smbusd/busses/IoPortBus.h"

#include "smbusd/busses/linux/Claim.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Smbusd {

IoPortBus::~IoPortBus() {
   if ( fd_ >= 0 )
      close( fd_ );
}

void IoPortBus::open() {
   if ( fd_ < 0 )
      fd_ = ::open( file_.c_str(), O_RDWR | O_CLOEXEC );
   if ( fd_ < 0 ) {
      const bool permitted = errno != EACCES && errno != EPERM;
      throw PortError( fmt::format( "{}: {}{}", file_, std::strerror( errno ),
                                    permitted ? "" : "; needs root and CAP_SYS_RAWIO" ) );
   }
   // If not, the file stays open: to close it would end the claims of this process's other ranges.
   const std::string others = claims_ ? claim( fd_, base_, size_ ) : "";
   if ( !others.empty() )
      throw PortError( fmt::format( "{}: {}", file_, others ) );
   usable_ = true;
}

Bus::Outcome IoPortBus::transfer( const Bus::Transfer &transfer ) {
   const auto refused = []( std::string why ) {
      return Bus::Outcome{ {}, std::move( why ), true, 0 };
   };
   const bool plain =
      transfer.kind == Bus::Transfer::Kind::Read || transfer.kind == Bus::Transfer::Kind::Write;
   if ( !plain || transfer.length < 1 || transfer.length > 2 )
      return refused( "I/O ports support only reads and writes of one or two bytes" );
   if ( transfer.pec )
      return refused( "I/O ports do not support PEC" );
   if ( transfer.offset >= size_ || transfer.length > size_ - transfer.offset )
      return refused( fmt::format( "outside the range of {} ports from {:#06x}", size_, base_ ) );
   try {
      if ( !usable_ )
         open();
   } catch ( const PortError &error ) {
      return refused( error.what() );
   }
   return execute( transfer );
}

Bus::Outcome IoPortBus::execute( const Bus::Transfer &transfer ) {
   Bus::Outcome outcome{ .bytes = 0 }; // there are no wires
   const auto port = static_cast<off_t>( base_ + transfer.offset );
   ssize_t count = 0;
   if ( transfer.kind == Bus::Transfer::Kind::Read ) {
      outcome.data.resize( transfer.length );
      count = pread( fd_, outcome.data.data(), transfer.length, port );
   } else {
      count = pwrite( fd_, transfer.data.data(), transfer.length, port );
   }
   if ( count == static_cast<ssize_t>( transfer.length ) )
      return outcome;
   return { {},
            fmt::format( "port {:#06x}: {}", port,
                         count < 0 ? std::strerror( errno ) : "fewer bytes than asked for" ),
            false,
            0 };
}

} // namespace Smbusd
