// What watch shows at every step of a bad day, on a small terminal and on a large one. The clock is
// turned by hand. The recordings are written anew with RENEW_SCREENS=1 in the environment.
#include "WatchedBoard.h"
#include "host/session/CageModules.h"
#include "host/terminal/BoardSections.h"
#include "host/terminal/WatchView.h"
#include "orbis-smbus/Scenario.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

namespace {

struct Size {
   size_t columns, rows;
};

class BadDayScreensTest : public ::testing::TestWithParam<Size> {
 protected:
   BadDayScreensTest() {
      ::setenv( "TZ", "UTC", 1 );
      ::tzset();
   }

   Host::Snapshot snapshot() {
      const auto time = std::chrono::floor<std::chrono::milliseconds>( board.board().time() );
      Host::Snapshot known{ .board = "boards/kelt",
                            .now = Health::WallTime( time ),
                            .objects = board.board().report() };
      board.monitor().describe( known.objects );
      known.health = Host::healthOf( board.monitor(), known.objects );
      known.modules = Host::modulesOf( board.board().board(), board.board().supervisor(),
                                       known.objects, board.board().now() );
      return known;
   }

   // Of each thing that is coloured, a sign or the word says the same.
   void expectNoColourAlone( size_t columns ) {
      for ( const Screen::Section &section : Host::sectionsOf( snapshot(), columns ) )
         for ( const auto &items : { section.items, section.cells, section.notes } )
            for ( const Screen::Item &item : items )
               for ( const Screen::Line &line : item.lines )
                  for ( const Screen::Span &span : line ) {
                     const std::string sign = signOf( span.style ),
                                       text = toText( item.lines.front() );
                     EXPECT_TRUE( sign.empty() || text.find_first_of( sign ) != std::string::npos )
                        << text;
                  }
   }
   static std::string signOf( Screen::Style style ) {
      return style == Screen::Style::Critical || style == Screen::Style::Warning ? "!"
             : style == Screen::Style::Unknown                                   ? "?~"
                                                                                 : "";
   }

   WatchedBoard board;
   Host::WatchView view;
};

TEST_P( BadDayScreensTest, ShowAtEveryStepWhatIsWrong ) {
   const size_t columns = GetParam().columns, rows = GetParam().rows;
   std::string screens;
   bool isOn = true; // the clock, since the last picture
   const auto draw = [&] {
      if ( !std::exchange( isOn, false ) )
         return;
      expectNoColourAlone( columns );
      screens +=
         fmt::format( "=== after {} s\n{}",
                      std::chrono::floor<std::chrono::seconds>( board.board().time() ).count(),
                      toText( view.draw( snapshot(), columns, rows ) ) );
   };
   SmbusClient::Scenario( BOARDS "/kelt/scenarios/bad-day.scenario" )
      .play( [&]( const SmbusControl::Request &request ) {
         if ( request.has_step() )
            isOn = true;
         else if ( !request.has_time() && !request.has_get() && !request.has_list() )
            draw();
         return board.ask( request );
      } );
   draw();
   const std::string path = fmt::format( RECORDINGS "/bad-day-{}x{}.txt", columns, rows );
   if ( std::getenv( "RENEW_SCREENS" ) )
      std::ofstream( path ) << screens;
   std::ifstream file( path );
   EXPECT_EQ( screens, std::string( std::istreambuf_iterator<char>( file ), {} ) ) << path;
}

INSTANTIATE_TEST_SUITE_P( Sizes, BadDayScreensTest,
                          ::testing::Values( Size{ 80, 24 }, Size{ 132, 50 } ),
                          []( const auto &size ) {
                             return fmt::format( "At{}x{}", size.param.columns, size.param.rows );
                          } );

} // namespace
