#include "smbusd/rights/ReadOnly.h"

#include "smbus/Decode.h"

#include <fmt/format.h>

namespace Smbusd {

void ReadOnly::check( const Bus::Transaction &transaction, const Peer & ) const {
   OpenMuxes muxes( muxes_, transaction.bus );
   for ( size_t i = 0; i < transaction.transfers.size(); ++i ) {
      const Bus::Transfer &transfer = transaction.transfers[i];
      if ( transfer.isRead() || muxes.take( transfer ) )
         continue;
      const std::string why = transfer.isSendByte()
                                 ? fmt::format( "and no file of the server names a multiplexer at "
                                                "{:#04x} (\"muxes\" of a route)",
                                                transfer.address )
                                 : "nothing of the transaction was carried out";
      throw Bus::Refused(
         describe( transaction, i,
                   fmt::format( "this socket is only for reading, {}; {} is for writing", why,
                                fullSocket_ ) ) );
   }
   muxes.checkClosed( transaction );
}

} // namespace Smbusd
