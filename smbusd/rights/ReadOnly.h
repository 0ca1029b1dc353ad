#pragma once

#include "smbusd/rights/Muxes.h"
#include "smbusd/server/Gate.h"

namespace Smbusd {

// Lets reads pass: read, receive byte, block read. And send byte to a multiplexer that is named,
// since without that one can't read what is behind it. A process call writes; there are no quick
// transfers. Of a transaction with anything else nothing is carried out.
class ReadOnly final : public Gate {
 public:
   // `fullSocket` is where one can write.
   ReadOnly( NamedMuxes muxes, std::string fullSocket )
      : muxes_( std::move( muxes ) ), fullSocket_( std::move( fullSocket ) ) {}

   void check( const Bus::Transaction &, const Peer & ) const override;

 private:
   const NamedMuxes muxes_;
   const std::string fullSocket_;
};

} // namespace Smbusd
