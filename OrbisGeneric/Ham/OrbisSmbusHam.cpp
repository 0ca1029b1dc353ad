#include "OrbisGeneric/Ham/OrbisSmbusHam.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Mux.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/HostServices.h"
#include "OrbisGeneric/LibraryInit.h"
#include "PlatformLibrary/PLSocket.h"

#include <cerrno>
#include <cstring>
#include <memory>

namespace Ham {

namespace {

// The address as one little-endian number: the offset in the low half, the path in the high half.
uint64_t wireAddress( AhamAddress const &address ) {
   uint64_t word;
   static_assert( sizeof( word ) == sizeof( address ) );
   memcpy( &word, &address, sizeof( word ) );
   return word;
}

struct Word {
   explicit Word( uint16_t value )
      : bytes{ static_cast<uint8_t>( value ), static_cast<uint8_t>( value >> 8 ) } {}
   uint8_t bytes[2]; // low byte first
};

} // namespace

Ham *OrbisSmbusHam::create( Topology::Topology const &topology, Drivers::DriverArgs const &args ) {
   OrbisSmbusVisitor path( &args );
   topology.accept( &path );
   return path.ham;
}

// A component id is unique in the whole topology, so the device id is not compared.
bool OrbisSmbusVisitor::visit( Topology::Component const *c ) {
   if ( c->uid != args->uid )
      return true;
   active = true;
   return false;
}

bool OrbisSmbusVisitor::visit( Topology::Device const *d ) {
   if ( !active && ( args->uid != Drivers::noComponent || d->did != args->did ) )
      return true;
   active = true;
   ham = new OrbisSmbusHam;
   ham->address = args->address;
   ham->address.addrSize = 1; // always 1 in a request; the JSON value is ignored
   return false;
}

// The walk goes up. Each bus replaces the one below it, so the root bus remains.
bool OrbisSmbusVisitor::visit( Topology::Bus const *b ) {
   if ( active ) {
      ham->address.bus = b->id & 0x7F;
      lastBusId = b->id;
   }
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::Mux const *m ) {
   if ( !active )
      return true;
   PL_TRACE( 3, "Mux using device %u with value %u", m->did, lastBusId );
   const Topology::Device *topoDev = Topology::findDevice( m->did );
   assert( topoDev );
   if ( !topoDev->args )
      PL_TRACE( 3, "Device %u isn't declared inline", m->did );
   assert( topoDev->args );
   Drivers::DriverArgs muxArgs = *topoDev->args;
   auto *muxDevice = Component::HardwareDevice::create( muxArgs, nullptr );
   assert( muxDevice );
   ham->muxes_.insert( ham->muxes_.begin(), muxDevice->newMux( muxArgs, lastBusId ) );
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::Accelerator const *a ) {
   if ( active )
      ham->address.accel = a->id & 0x7F;
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::SCD const *medium ) {
   if ( active ) {
      ham->masterType = Smbus::MASTER_SCD;
      ham->pci = medium->pci;
   }
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::I2C const *medium ) {
   if ( active )
      ham->masterType = medium->simulated ? Smbus::MASTER_SIMULATED : Smbus::MASTER_I2C;
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::IOPort const * ) {
   if ( active )
      ham->masterType = Smbus::MASTER_IOPORT;
   return true;
}

bool OrbisSmbusVisitor::visit( Topology::Celestica const * ) {
   if ( active )
      ham->masterType = Smbus::MASTER_CELESTICA;
   return true;
}

void OrbisSmbusHam::setAddress( uint8_t deviceAddress ) { address.address = deviceAddress & 0x7F; }

uint8_t OrbisSmbusHam::getAddress() const { return address.address; }

void OrbisSmbusHam::aimAt( Component::LogicalDevice::Mux const &mux ) {
   setAddress( static_cast<OrbisSmbusHam *>( mux.device()->ham_ )->getAddress() );
}

void OrbisSmbusHam::init() {
   prepareRequestCount_ = 0;
   request_.Clear();
   response_.Clear();
   const uint8_t deviceAddress = getAddress();
   for ( auto *mux : muxes_ ) {
      aimAt( *mux );
      mux->selectRequest( this );
      ++prepareRequestCount_;
   }
   setAddress( deviceAddress );
}

void OrbisSmbusHam::prepare() {
   // protobuf clears a removed element and uses it again, so later batches allocate no memory.
   while ( static_cast<uint32_t>( request_.request_size() ) > prepareRequestCount_ )
      request_.mutable_request()->RemoveLast();
   response_.Clear();
   lastResponseId = INVALID_RESPONSE_ID;
}

pl_status OrbisSmbusHam::execute() {
   const uint8_t deviceAddress = getAddress();
   for ( auto mux = muxes_.rbegin(); mux != muxes_.rend(); ++mux ) {
      aimAt( **mux );
      ( *mux )->resetRequest( this );
   }
   setAddress( deviceAddress );
   PL_TRACE( 4, "executing OrbisSmbusHam request" );
   if ( retryCountSet )
      request_.set_retries( retryCount );

   Smbus::TransactionResponse *answer = nullptr;
   const int sent = _plSock->sendRequestWait( &request_, &answer );
   const int error = errno;
   const std::unique_ptr<Smbus::TransactionResponse> owned( answer );
   if ( sent < 0 ) {
      PL_TRACE( 3, "%s: error. %d, %s", "execute", error, strerror( error ) );
      return PL_STATUS_SOCKET;
   }
   response_.CopyFrom( *answer );
   if ( response_.failed() ) {
      PL_TRACE( 3, "%s: failure in response %s", "execute",
                response_.has_error() ? response_.error().c_str() : "unknown reason" );
      return PL_STATUS_TRANSACTION;
   }
   if ( response_.response_size() != request_.request_size() ) {
      PL_TRACE( 3, "%s: invalid number of response, expecting %d not %d", "execute",
                request_.request_size(), response_.response_size() );
      return PL_STATUS_TRANSACTION;
   }
   return PL_STATUS_OK;
}

Smbus::Request *OrbisSmbusHam::queue( unsigned reg, Smbus::RequestType type, unsigned length,
                                      bool pec ) {
   address.offset = reg;
   Smbus::Request *request = request_.add_request();
   request->set_addr( wireAddress( address ) );
   request->set_pci( pci );
   request->set_mastertype( masterType );
   request->set_type( type );
   request->set_length( length );
   request->set_pec( pec );
   ++lastResponseId;
   return request;
}

Ham::ResponseId OrbisSmbusHam::queueRead( unsigned reg, Smbus::RequestType type, unsigned length ) {
   queue( reg, type, length, false );
   return lastResponseId;
}

Ham::ResponseId OrbisSmbusHam::queueWrite( unsigned reg, Smbus::RequestType type, void const *data,
                                           unsigned length, bool pec ) {
   // Writes into the string of the element. set_data would make a temporary string.
   queue( reg, type, length, pec )
      ->mutable_data()
      ->assign( static_cast<char const *>( data ), length );
   return INVALID_RESPONSE_ID;
}

Ham::ResponseId OrbisSmbusHam::addRecvByte() { return queueRead( 0, Smbus::REQUEST_READ, 0 ); }

Ham::ResponseId OrbisSmbusHam::addRead8( unsigned reg ) {
   return queueRead( reg, Smbus::REQUEST_READ, 1 );
}

Ham::ResponseId OrbisSmbusHam::addRead16( unsigned reg ) {
   return queueRead( reg, Smbus::REQUEST_READ, 2 );
}

Ham::ResponseId OrbisSmbusHam::addRead( unsigned reg, unsigned len ) {
   return queueRead( reg, Smbus::REQUEST_READ, len );
}

Ham::ResponseId OrbisSmbusHam::addReadBlock( unsigned reg ) {
   return queueRead( reg, Smbus::REQUEST_BLOCK_READ, 0 );
}

Ham::ResponseId OrbisSmbusHam::addSendByte( uint8_t value, bool pec ) {
   queue( value, Smbus::REQUEST_WRITE, 0, pec ); // the byte is sent as the register offset
   return INVALID_RESPONSE_ID;
}

Ham::ResponseId OrbisSmbusHam::addWrite8( unsigned reg, uint8_t value, bool pec ) {
   return queueWrite( reg, Smbus::REQUEST_WRITE, &value, 1, pec );
}

Ham::ResponseId OrbisSmbusHam::addWrite16( unsigned reg, uint16_t value, bool pec ) {
   return queueWrite( reg, Smbus::REQUEST_WRITE, Word( value ).bytes, 2, pec );
}

Ham::ResponseId OrbisSmbusHam::addWrite( unsigned reg, void const *data, unsigned len, bool pec ) {
   return queueWrite( reg, Smbus::REQUEST_WRITE, data, len, pec );
}

Ham::ResponseId OrbisSmbusHam::addWriteBlock( unsigned reg, void const *data, unsigned len,
                                              bool pec ) {
   return queueWrite( reg, Smbus::REQUEST_BLOCK_WRITE, data, len, pec );
}

Ham::ResponseId OrbisSmbusHam::addProcessCall( unsigned reg, uint16_t value ) {
   queueWrite( reg, Smbus::REQUEST_PROCESS_CALL, Word( value ).bytes, 2, false );
   return lastResponseId;
}

const std::string &OrbisSmbusHam::dataOf( ResponseId idx ) const {
   assert( idx != INVALID_RESPONSE_ID );
   assert( ( uint32_t )response_.response_size() > prepareRequestCount_ + idx );
   return response_.response( static_cast<int>( prepareRequestCount_ + idx ) ).data();
}

uint8_t OrbisSmbusHam::get8( ResponseId idx ) {
   const std::string &data = dataOf( idx );
   assert( data.size() == 1 );
   return static_cast<uint8_t>( data[0] );
}

uint16_t OrbisSmbusHam::get16( ResponseId idx ) {
   const std::string &data = dataOf( idx );
   assert( data.size() == 2 );
   return static_cast<uint16_t>( static_cast<uint8_t>( data[0] ) | static_cast<uint8_t>( data[1] )
                                                                      << 8 );
}

std::string OrbisSmbusHam::getBlock( ResponseId idx, unsigned ) { return dataOf( idx ); }

} // namespace Ham
