#include "OrbisGeneric/Ham/Ham.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/NotImplementedException.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/SearchVisitor.h"
#include "OrbisGeneric/HostServices.h"

namespace Ham {

Ham::ResponseId Ham::addRecvByte() { throw NotImplementedException( "addRecvByte" ); }
Ham::ResponseId Ham::addRead8( unsigned ) { throw NotImplementedException( "addRead8" ); }
Ham::ResponseId Ham::addRead16( unsigned ) { throw NotImplementedException( "addRead16" ); }
Ham::ResponseId Ham::addRead32( unsigned ) { throw NotImplementedException( "addRead32" ); }
Ham::ResponseId Ham::addRead( unsigned, unsigned ) { throw NotImplementedException( "addRead" ); }
Ham::ResponseId Ham::addReadBlock( unsigned ) { throw NotImplementedException( "addReadBlock" ); }
Ham::ResponseId Ham::addSendByte( uint8_t, bool ) {
   throw NotImplementedException( "addSendByte" );
}
Ham::ResponseId Ham::addWrite8( unsigned, uint8_t, bool ) {
   throw NotImplementedException( "addWrite8" );
}
Ham::ResponseId Ham::addWrite16( unsigned, uint16_t, bool ) {
   throw NotImplementedException( "addWrite16" );
}
Ham::ResponseId Ham::addWrite32( unsigned, uint32_t, bool ) {
   throw NotImplementedException( "addWrite32" );
}
Ham::ResponseId Ham::addWrite( unsigned, void const *, unsigned, bool ) {
   throw NotImplementedException( "addWrite" );
}
Ham::ResponseId Ham::addWriteBlock( unsigned, void const *, unsigned, bool ) {
   throw NotImplementedException( "addWriteBlock" );
}
Ham::ResponseId Ham::addProcessCall( unsigned, uint16_t ) {
   throw NotImplementedException( "addProcessCall" );
}
uint8_t Ham::get8( ResponseId ) { throw NotImplementedException( "get8" ); }
uint16_t Ham::get16( ResponseId ) { throw NotImplementedException( "get16" ); }
uint32_t Ham::get32( ResponseId ) { throw NotImplementedException( "get32" ); }
std::string Ham::getBlock( ResponseId, unsigned ) { throw NotImplementedException( "getBlock" ); }

namespace {

// Runs a batch of one request: queue adds the request, fetch reads the answer.
template <typename Queue, typename Fetch>
pl_status single( Ham &ham, Queue queue, Fetch fetch ) {
   ham.prepare();
   Ham::ResponseId id = queue();
   pl_status status = ham.execute();
   if ( status == PL_STATUS_OK )
      fetch( id );
   return status;
}

template <typename Queue>
pl_status single( Ham &ham, Queue queue ) {
   return single( ham, queue, []( Ham::ResponseId ) {} );
}

} // namespace

pl_status Ham::recvByte( uint8_t *out ) {
   return single(
      *this, [&] { return addRecvByte(); }, [&]( ResponseId id ) { *out = get8( id ); } );
}

pl_status Ham::read8( unsigned reg, uint8_t *out ) {
   return single(
      *this, [&] { return addRead8( reg ); }, [&]( ResponseId id ) { *out = get8( id ); } );
}

pl_status Ham::read16( unsigned reg, uint16_t *out ) {
   return single(
      *this, [&] { return addRead16( reg ); }, [&]( ResponseId id ) { *out = get16( id ); } );
}

pl_status Ham::read32( unsigned reg, uint32_t *out ) {
   return single(
      *this, [&] { return addRead32( reg ); }, [&]( ResponseId id ) { *out = get32( id ); } );
}

pl_status Ham::read( unsigned reg, unsigned len, std::string *out ) {
   return single(
      *this, [&] { return addRead( reg, len ); },
      [&]( ResponseId id ) { *out = getBlock( id, len ); } );
}

pl_status Ham::readBlock( unsigned reg, std::string *out ) {
   return single(
      *this, [&] { return addReadBlock( reg ); },
      [&]( ResponseId id ) { *out = getBlock( id, 0 ); } );
}

pl_status Ham::processCall( unsigned reg, uint16_t value, uint16_t *out ) {
   return single(
      *this, [&] { return addProcessCall( reg, value ); },
      [&]( ResponseId id ) { *out = get16( id ); } );
}

pl_status Ham::sendByte( uint8_t value, bool flag ) {
   return single( *this, [&] { return addSendByte( value, flag ); } );
}

pl_status Ham::write8( unsigned reg, uint8_t value, bool flag ) {
   return single( *this, [&] { return addWrite8( reg, value, flag ); } );
}

pl_status Ham::write16( unsigned reg, uint16_t value, bool flag ) {
   return single( *this, [&] { return addWrite16( reg, value, flag ); } );
}

pl_status Ham::write32( unsigned reg, uint32_t value, bool flag ) {
   return single( *this, [&] { return addWrite32( reg, value, flag ); } );
}

pl_status Ham::write( unsigned reg, void const *data, unsigned len, bool flag ) {
   return single( *this, [&] { return addWrite( reg, data, len, flag ); } );
}

pl_status Ham::writeBlock( unsigned reg, void const *data, unsigned len, bool flag ) {
   return single( *this, [&] { return addWriteBlock( reg, data, len, flag ); } );
}

void Ham::retryCountIs( unsigned n ) {
   retryCount = n;
   retryCountSet = true;
}

Ham *Ham::create( std::string const &name, Topology::Topology const &topology,
                  Drivers::DriverArgs const &args ) {
   PL_TRACE( 3, "looking up for %s in %p with %p", name.c_str(),
             static_cast<void const *>( &topology ), static_cast<void const *>( &args ) );
   auto entry = hams.find( name );
   if ( entry == hams.end() ) {
      PL_TRACE( 0, "Couldn't find HAM %s", name.c_str() );
      return nullptr;
   }
   PL_TRACE( 3, "calling %s factory function", name.c_str() );
   Ham *ham = entry->second( topology, args );
   if ( !ham ) {
      PL_TRACE( 0, "Factory function returned, couldn't create HAM %s", name.c_str() );
      return nullptr;
   }
   PL_TRACE( 3, "ham initialisation" );
   ham->init();
   return ham;
}

Ham *createHam( Drivers::DriverArgs const &args ) {
   const Topology::Topology *topology = Topology::_topology.get();
   assert( topology );
   PL_TRACE( 0, "looking for component %u of device %u in topology", args.uid, args.did );
   SearchVisitor search( args.uid, args.did );
   topology->accept( &search );
   if ( !search.found ) {
      PL_TRACE( 0, "could not find component uid %d in topology", static_cast<int>( args.uid ) );
      return nullptr;
   }
   PL_TRACE( 0, "creating %s HAM using topology information", search.ham.c_str() );
   Ham *ham = Ham::create( search.ham, *topology, args );
   if ( !ham )
      PL_TRACE( 0, "failed to create HAM" );
   return ham;
}

} // namespace Ham
