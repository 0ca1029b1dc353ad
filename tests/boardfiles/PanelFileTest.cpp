// panel.json beside a board.
#include "boardfiles/PanelFile.h"

#include "PrivateFolder.h"
#include "boardfiles/Board.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class PanelFileTest : public ::testing::Test {
 protected:
   // A side of 100 by 50 with these places.
   std::vector<PanelPlace> read( const std::string &places ) {
      folder_.write( "panel.json", fmt::format( R"({{ "sides": [ {{ "name": "front", "width": 100,
"height": 50, "places": [
{} ] }} ] }})",
                                                places ) );
      Findings findings;
      const Panel panel =
         readPanel( folder_.file( "panel.json" ), { "sfp1", "sfp2", "sfp3", "slot" }, findings );
      for ( const Finding &finding : findings )
         reasons_.push_back( toText( finding ) );
      return panel.empty() ? std::vector<PanelPlace>() : panel[0].places;
   }

   const TestSupport::PrivateFolder folder_;
   std::vector<std::string> reasons_;
};

TEST_F( PanelFileTest, FillsColumnAfterColumn ) {
   EXPECT_THAT( read( R"({ "objects": [ "sfp1", "sfp2", "sfp3" ], "at": [ 10, 5 ],
                           "size": [ 14, 9.5 ], "step": [ 15.5, 11 ], "rows": 2 })" ),
                ElementsAre( PanelPlace{ "sfp1", 10, 5, 14, 9.5 },
                             PanelPlace{ "sfp2", 10, 16, 14, 9.5 },
                             PanelPlace{ "sfp3", 25.5, 5, 14, 9.5 } ) );
   EXPECT_THAT( reasons_, IsEmpty() );
}

TEST_F( PanelFileTest, RefusesAnObjectThatTheBoardDoesNotHave ) {
   read( R"({ "objects": [ "spf1" ], "at": [ 0, 0 ], "size": [ 1, 1 ] })" );
   EXPECT_THAT( reasons_, ElementsAre( EndsWith(
                             ":3:16: no object is named \"spf1\" (did you mean \"sfp1\"?)" ) ) );
}

TEST_F( PanelFileTest, RefusesASecondPlace ) {
   read( R"({ "objects": [ "sfp1" ], "at": [ 0, 0 ], "size": [ 1, 1 ] },
            { "objects": [ "sfp1" ], "at": [ 5, 0 ], "size": [ 1, 1 ] })" );
   EXPECT_THAT( reasons_, ElementsAre( EndsWith( "\"sfp1\" has a place already" ) ) );
}

TEST_F( PanelFileTest, RefusesWhatIsBesideItsSide ) {
   read( R"({ "objects": [ "sfp1", "sfp2" ], "at": [ 80, 0 ], "size": [ 14, 9 ],
              "step": [ 15, 0 ] })" );
   EXPECT_THAT( reasons_, ElementsAre( EndsWith(
                             "\"sfp2\" reaches to 109, 9, but its side is 100 by 50" ) ) );
}

TEST_F( PanelFileTest, APartIsInsideOfItsModuleButNotHalfUponIt ) {
   read( R"({ "objects": [ "slot" ], "at": [ 0, 0 ], "size": [ 30, 30 ] },
            { "objects": [ "sfp1" ], "at": [ 5, 5 ], "size": [ 10, 10 ] },
            { "objects": [ "sfp2" ], "at": [ 25, 5 ], "size": [ 10, 10 ] },
            { "objects": [ "sfp3" ], "at": [ 30, 20 ], "size": [ 10, 10 ] })" );
   EXPECT_THAT( reasons_, ElementsAre( EndsWith( "\"sfp2\" is half upon \"slot\"" ) ) );
}

TEST_F( PanelFileTest, SeveralObjectsNeedAStep ) {
   read( R"({ "objects": [ "sfp1", "sfp2" ], "at": [ 0, 0 ], "size": [ 1, 1 ] })" );
   EXPECT_THAT( reasons_, ElementsAre( EndsWith( "several objects need a \"step\"" ) ) );
}

TEST_F( PanelFileTest, RefusesWhatItsSchemaRefuses ) {
   read( R"({ "objects": [ "sfp1" ], "at": [ 0 ], "size": [ 1, 1 ] })" );
   EXPECT_THAT( reasons_, ElementsAre( HasSubstr( "panel.json:3:" ) ) );
}

TEST( KeltPanelTest, HasAPlaceForEachCageSlotFanAndLed ) {
   Findings findings;
   const auto board =
      loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   ASSERT_TRUE( board );
   std::set<std::string> placed;
   for ( const PanelSide &side : board->panel )
      for ( const PanelPlace &place : side.places )
         placed.insert( place.object );
   for ( const ObjectDescription &object : board->objects ) {
      const bool isSeen = object.kind == Kind::Xcvr || object.kind == Kind::Slot ||
                          object.kind == Kind::Led || object.kind == Kind::TempSensor;
      EXPECT_TRUE( !isSeen || placed.contains( object.name ) ) << object.name;
   }
}

} // namespace
} // namespace BoardFilesTest
