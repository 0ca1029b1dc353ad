#include "smbus/WireTime.h"

namespace Bus {

namespace {

// The bytes from the start to the repeated start, and from there to the stop; with their addresses.
struct Halves {
   uint64_t written = 0;
   uint64_t read = 0;
};

Halves halvesOf( const Transfer &transfer, size_t blockBytes ) {
   using Kind = Transfer::Kind;
   Halves halves;
   if ( !transfer.isReceiveByte() )
      halves.written = 1 + transfer.offsetBytes + transfer.data.size();
   switch ( transfer.kind ) {
   case Kind::Read:
      halves.read = 1 + ( transfer.isReceiveByte() ? 1 : transfer.length );
      break;
   case Kind::ProcessCall:
      halves.read = 1 + transfer.length;
      break;
   case Kind::BlockRead:
      halves.read = 2 + blockBytes;
      break;
   case Kind::BlockWrite:
      ++halves.written;
      break;
   case Kind::Write:
      break;
   }
   if ( transfer.pec )
      ++( halves.read > 0 ? halves.read : halves.written );
   return halves;
}

WireCount countOf( const Halves &halves, uint64_t bytes ) {
   if ( bytes == 0 )
      return {};
   const bool both = halves.written > 0 && bytes > halves.written;
   return { both ? 2u : 1u, bytes, 1 };
}

} // namespace

WireCount onTheWires( const Transfer &transfer, size_t blockBytes ) {
   const Halves halves = halvesOf( transfer, blockBytes );
   return countOf( halves, halves.written + halves.read );
}

WireCount onTheWires( const Transfer &transfer, const Outcome &outcome ) {
   const Halves halves = halvesOf( transfer, outcome.data.size() );
   if ( outcome.bytes )
      return countOf( halves, *outcome.bytes );
   if ( outcome.error == noAddressAcknowledge )
      return countOf( halves, 1 );
   return countOf( halves, halves.written + halves.read );
}

} // namespace Bus
