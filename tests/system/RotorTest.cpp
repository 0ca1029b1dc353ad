// The rotors of a fan module as rows of their own, through the plug-in.
#include "BoardInOneProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>

namespace {

int64_t rpmOf( const BoardInOneProcess &board, const std::string &fan ) {
   return std::get<int64_t>( board.object( fan ).values.at( 0 ).reading.value );
}

// What is wrong; empty when nothing is.
std::string wrongWith( BoardInOneProcess &board ) {
   board.start();
   const auto inlet = rpmOf( board, "fan3-inlet" ), outlet = rpmOf( board, "fan3-outlet" );
   if ( inlet <= outlet || ( inlet + outlet ) / 2 != rpmOf( board, "fan3" ) )
      return fmt::format( "{} is not the mean of {} and {}", rpmOf( board, "fan3" ), inlet,
                          outlet );
   for ( Simulator::Quantity &quantity : board.chip( "fan-inlets" ).quantities() )
      if ( quantity.name == "fan3.inlet stalled" )
         quantity.set( 1 );
   for ( int i = 0; i < 20; ++i )
      board.round();
   if ( rpmOf( board, "fan3-inlet" ) > 1000 || rpmOf( board, "fan3-outlet" ) < 9000 )
      return fmt::format( "the inlet that stalled has {}", rpmOf( board, "fan3-inlet" ) );
   return {};
}

// One process can only make the driver objects once.
TEST( RotorTest, AModuleAndItsRotorsMayComeInEitherOrder ) {
   for ( const bool rotorsFirst : { false, true } ) {
      const auto tell = [rotorsFirst] {
         BoardInOneProcess board( { "fan3", "fan3-inlet", "fan3-outlet" }, rotorsFirst );
         const std::string wrong = wrongWith( board );
         fmt::print( stderr, "{}", wrong );
         std::_Exit( wrong.empty() ? 0 : 1 );
      };
      EXPECT_EXIT( tell(), ::testing::ExitedWithCode( 0 ), "" ) << rotorsFirst;
   }
}

} // namespace
