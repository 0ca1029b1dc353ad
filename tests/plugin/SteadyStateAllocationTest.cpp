// After the first batches, a batch allocates no memory in the plug-in: requests, mux selections and
// answers use the elements of earlier batches again.
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "support/PluginFixture.h"

#include <cstdlib>
#include <new>

namespace {

long allocations = 0;
bool counting = false;

void *counted( size_t size ) {
   if ( counting )
      ++allocations;
   if ( void *memory = std::malloc( size ) )
      return memory;
   throw std::bad_alloc();
}

} // namespace

void *operator new( size_t size ) { return counted( size ); }
void *operator new[]( size_t size ) { return counted( size ); }
void operator delete( void *memory ) noexcept { std::free( memory ); }
void operator delete[]( void *memory ) noexcept { std::free( memory ); }
void operator delete( void *memory, size_t ) noexcept { std::free( memory ); }
void operator delete[]( void *memory, size_t ) noexcept { std::free( memory ); }

namespace {

class SteadyStateAllocationTest : public PluginFixture {
 protected:
   SteadyStateAllocationTest() {
      connect( "[{'type':'I2C','ham':'OrbisSmbus','bus':{'id':0,'devices':["
               "{'did':100,'driver':'PCA9548','address':{'address':112}}],'muxes':[{'did':100,"
               "'busses':[{'id':1,'devices':[{'did':20}]}]}]}}]" );
      Drivers::DriverArgs args;
      EXPECT_TRUE(
         args.parseJSON( json( "{'did':20,'driver':'Dummy','address':{'address':72}}" ) ) );
      ham = static_cast<Ham::OrbisSmbusHam *>( Ham::createHam( args ) );
      // The socket library allocates the answer, so it is not counted.
      FakeServer::answer = []( Smbus::TransactionRequest *request, auto **response ) {
         const bool was = counting;
         counting = false;
         *response = new Smbus::TransactionResponse;
         for ( int i = 0; i < request->request_size(); ++i )
            ( *response )->add_response()->set_data( "a long answer that fits no small string" );
         counting = was;
         return 0;
      };
   }
   long allocationsOf( int batches ) {
      allocations = 0;
      TestHost::keepsTraces = false; // the host allocates their texts
      FakeServer::keepsRequests = false;
      for ( int i = 0; i < batches; ++i ) {
         counting = true;
         ham->prepare();
         ham->addRead8( 0x10 );
         ham->addRead16( 0x11 );
         ham->addWrite( 0x12, "thirty-two bytes of data, or more", 33, true );
         ham->addReadBlock( 0x13 );
         EXPECT_EQ( ham->execute(), PL_STATUS_OK );
         counting = false;
      }
      return allocations;
   }
   Ham::OrbisSmbusHam *ham;
};

TEST_F( SteadyStateAllocationTest, ABatchAllocatesNothing ) {
   EXPECT_GT( allocationsOf( 2 ), 0 ); // proves that the counter works
   EXPECT_EQ( allocationsOf( 1000 ), 0 );
}

} // namespace
