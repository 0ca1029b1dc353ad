#include "simulator/bus/WireTimedBus.h"
#include "smbus/WireTime.h"

#include <gtest/gtest.h>

#include <chrono>

namespace SimulatorTest {

namespace {

using namespace Bus;
using std::chrono::steady_clock;

// Answers at once.
class QuickBus final : public RootBus {
 public:
   Outcome transfer( const Transfer &transfer ) override {
      return { .data = std::string( transfer.length, 'x' ) };
   }
};

steady_clock::duration timeOf( RootBus &bus, const Transfer &transfer ) {
   const auto begun = steady_clock::now();
   EXPECT_TRUE( bus.transfer( transfer ).ok() );
   return steady_clock::now() - begun;
}

TEST( WireTimedBusTest, ATransferTakesAsLongAsItsBits ) {
   Busses busses;
   const auto slow = rootBusId( Master::I2c, 0, 0, 1 ), usual = rootBusId( Master::I2c, 0, 0, 2 ),
              ports = rootBusId( Master::IoPort, 0, 0, 0 );
   for ( const RootBusId &id : { slow, usual, ports } )
      busses.emplace( id, std::make_unique<QuickBus>() );
   RootBus *const portBus = busses.at( ports ).get();
   busses = Simulator::wireTimed( std::move( busses ), { { slow, 10'000 } } );
   const Transfer word{ .kind = Transfer::Kind::Read, .length = 2 };
   EXPECT_GE( timeOf( *busses.at( slow ), word ), wireTime( onTheWires( word ), 10'000 ) );
   EXPECT_GE( timeOf( *busses.at( usual ), word ), wireTime( onTheWires( word ), usualClock ) );
   EXPECT_EQ( busses.at( ports ).get(), portBus ); // there are no wires
}

} // namespace

} // namespace SimulatorTest
