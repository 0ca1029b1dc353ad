#include "smbus/Requests.h"

namespace Bus {

Smbus::Request &addRequest( Smbus::TransactionRequest &transaction, const RootBusId &bus,
                            uint8_t address, Smbus::RequestType type, uint32_t offset,
                            uint32_t length ) {
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

void open( Smbus::TransactionRequest &transaction, const RootBusId &bus, const SegmentPath &path ) {
   for ( const Selection &one : path )
      addRequest( transaction, bus, one.mux, Smbus::REQUEST_WRITE, one.select, 0 );
}

void close( Smbus::TransactionRequest &transaction, const RootBusId &bus,
            const SegmentPath &path ) {
   for ( auto one = path.rbegin(); one != path.rend(); ++one )
      addRequest( transaction, bus, one->mux, Smbus::REQUEST_WRITE, 0, 0 );
}

} // namespace Bus
