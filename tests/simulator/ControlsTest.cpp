// Requests that the control socket refuses. orbis-smbus checks its arguments before; other clients
// may not.
#include "simulator/board/Controls.h"
#include "ManualClock.h"
#include "simulator/board/SimulatedBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using SmbusControl::Fault;
using SmbusControl::Request;

class ControlsTest : public ::testing::Test {
 protected:
   std::string refusal( const Request &request ) { return controls.answer( request ).error(); }
   std::string refusal( const std::function<void( Fault & )> &set ) {
      Request request;
      request.mutable_fault()->set_chip( "psu1" );
      set( *request.mutable_fault() );
      return refusal( request );
   }

   TestSupport::ManualClock real;
   Simulator::SimulationClock clock{ real, 0 };
   Simulator::SimulatedBoard board{ KELT_BOARD "/topology.json", KELT_BOARD "/simulation.json",
                                    clock };
   Simulator::Controls controls{ board.bench(), clock };
};

TEST_F( ControlsTest, RefusesAStepBackOrOfMoreThanAYear ) {
   Request step;
   step.set_step( -1 );
   EXPECT_EQ( refusal( step ), "-1 is not within 0 to 31536000 s" );
   step.set_step( 31536001 );
   EXPECT_EQ( refusal( step ), "31536001 is not within 0 to 31536000 s" );
   step.set_step( 31536000 );
   for ( int year = 1; year <= 250; ++year )
      EXPECT_EQ( refusal( step ), "" ) << year;
   EXPECT_THAT( refusal( step ),
                testing::HasSubstr( "the simulation's clock is at 7884000000 s and "
                                    "ends at 7884000000 s" ) );
   Request speed;
   speed.set_speed( -1 );
   EXPECT_EQ( refusal( speed ), "-1 is not within 0 to 1000000" );
}

TEST_F( ControlsTest, RefusesFaultsThatNoChipCanHave ) {
   EXPECT_EQ( refusal( []( Fault &fault ) { fault.set_nacks( 2 ); } ),
              "a chip can't nack 2 of 1 transfers" );
   EXPECT_EQ( refusal( []( Fault &fault ) { fault.set_nacks( 0 ), fault.set_out_of( 0 ); } ),
              "a chip can't nack 0 of 0 transfers" );
   EXPECT_EQ( refusal( []( Fault &fault ) { fault.set_slow_ms( 60001 ); } ),
              "60001 is not within 0 to 60000 ms" );
   EXPECT_EQ( refusal( []( Fault &fault ) { fault.set_block_count( 256 ); } ),
              "256 is not within 0 to 255" );
   EXPECT_EQ( refusal( []( Fault &fault ) { fault.set_answer_size( 8193 ); } ),
              "8193 is not within 0 to 8192 bytes" );
   EXPECT_EQ( refusal( []( Fault &fault ) { fault.mutable_corruption()->set_mask( 0 ); } ),
              "0 is not within 1 to 255" );
   EXPECT_FALSE( board.bench().chip( "psu1" ).faults().any() );
   EXPECT_EQ( refusal( []( Fault &fault ) { fault.set_nacks( 1 ), fault.set_out_of( 2 ); } ), "" );
   EXPECT_TRUE( board.bench().chip( "psu1" ).faults().any() );
}

} // namespace

} // namespace SimulatorTest
