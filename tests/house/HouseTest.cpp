// The shape of this source tree.
#include "Rules.h"

namespace House {

namespace {

const std::vector<Allowance> houseRooms{
   { "platform", {} },
   { "smbus", { "platform/" } },
   { "boardfiles", { "smbus/" } },
   { "commandline", { "boardfiles/" } },
   { "health", { "boardfiles/" } },
   { "optics", {} },
   { "history", { "health/" } },
   { "sqlite", {} },
   { "http", { "platform/sockets/" } },
   { "panel", {} },
   { "metrics", {} },
   { "screen", {} },
   { "simulator", { "boardfiles/", "smbus/" } },
   { "smbusd", { "simulator/", "commandline/", "boardfiles/", "smbus/", "platform/" } },
   { "orbis-smbus", { "smbus/", "commandline/", "boardfiles/", "platform/" } },
   // A program that loads the plug-in must not link the SMBus messages a second time.
   { "host",
     { "health/", "optics/", "metrics/", "screen/", "history/", "sqlite/", "http/", "panel/",
       "commandline/", "boardfiles/", "platform/pl.h", "platform/sockets/", "smbus/BusLoads.h",
       "smbus/Control.proto" } },
   { "OrbisGeneric", { "platform/pl.h", "platform/OrbisUtil/", "platform/PlatformLibrary/" } },
};

const std::vector<Order> folderOrders{
   { "platform", { "OrbisUtil", ".", "PlatformLibrary", "sockets" } },
   { "smbus", { "." } },
   { "boardfiles", { "." } },
   { "commandline", { "." } },
   { "health", { ".", "pmbus" } },
   { "optics", { ".", "tables", "sff8472", "sff8636", "cmis" } },
   { "history", { "." } },
   { "sqlite", { "." } },
   { "http", { "." } },
   { "panel", { "." } },
   { "metrics", { "." } },
   { "screen", { "." } },
   { "simulator", { "chips", "chips/modules", "bus", "board" } },
   { "smbusd",
     { ".", "accounts", "server", "busses/linux", "busses", "record", "routes", "export", "lease",
       "control", "rights" } },
   { "orbis-smbus", { "." } },
   { "host", { ".", "plugin", "session", "journal", "serve", "terminal", "commands" } },
   { "OrbisGeneric", { ".", "Ham", "Components", "Drivers", "Drivers/Kelt" } },
};

// Ham, Components and Drivers call each other: a driver uses its access method, an access method
// the drivers of the muxes on its path, and an exported object creates its driver by name.
const std::vector<Allowance> allowedCrossings{
   { "OrbisGeneric", { "OrbisGeneric/Drivers/DriverArgs.h" } },
   { "OrbisGeneric/Ham",
     { "OrbisGeneric/Components/Device.h", "OrbisGeneric/Components/Mux.h",
       "OrbisGeneric/Components/NotImplementedException.h", "OrbisGeneric/Drivers/DriverArgs.h" } },
   { "OrbisGeneric/Components",
     { "OrbisGeneric/Ham/Ham.h", "OrbisGeneric/Drivers/DriverArgs.h",
       "OrbisGeneric/Drivers/Drivers.h" } },
   { "OrbisGeneric/Drivers", { "OrbisGeneric/Components/", "OrbisGeneric/Ham/Ham.h" } },
   { "OrbisGeneric/Drivers/Kelt",
     { "OrbisGeneric/Components/", "OrbisGeneric/Drivers/", "OrbisGeneric/Ham/Ham.h",
       "OrbisGeneric/Ham/OrbisSmbusHam.h" } },
};

const SourceTree &houseTree() {
   static const SourceTree read = SourceTree::read( SOURCE_ROOT );
   return read;
}

void expectNone( const Findings &findings ) {
   for ( const std::string &finding : findings )
      ADD_FAILURE() << finding;
}

} // namespace

TEST( HouseTest, RoomsIncludeOnlyWhatTheyMay ) {
   expectNone( forbiddenIncludes( houseTree(), houseRooms ) );
}

TEST( HouseTest, EveryFolderWithSourcesIsAKnownRoom ) {
   expectNone( unknownRooms( houseTree(), houseRooms, { "tests", "bench", "fuzz" } ) );
}

TEST( HouseTest, HeadersOfARoomIncludeOnlyLowerFolders ) {
   expectNone( upwardIncludes( houseTree(), folderOrders ) );
}

TEST( HouseTest, NoHeaderIncludesItself ) { expectNone( includeCircles( houseTree() ) ); }

TEST( HouseTest, ThePlugInsSourcesCrossFoldersOnlyWhereListed ) {
   expectNone( forbiddenCrossings( houseTree(), allowedCrossings ) );
}

TEST( HouseTest, NoRoomHasMoreThan30PercentOfTheLines ) {
   expectNone( largeRooms( houseTree(), houseRooms, 30 ) );
}

// It refuses a build without assertions.
TEST( HouseTest, EverySourceOfThePlugInKeepsItsAssertions ) {
   expectNone( sourcesWithout( houseTree(), "OrbisGeneric", "OrbisGeneric/Assert.h" ) );
}

TEST( HouseTest, EveryTestIsBuilt ) { expectNone( forgottenTests( houseTree() ) ); }

} // namespace House
