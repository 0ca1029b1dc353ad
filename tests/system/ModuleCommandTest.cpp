// What orbis-host module and modules tell.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <fstream>

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr auto warning = "this reads the modules itself, which clears the flags that they keep";

class ModuleCommandTest : public ::testing::Test {
 protected:
   // Without a board.
   static Ran alone( std::vector<std::string> words ) {
      words.insert( words.begin(), { ORBIS_HOST, "module" } );
      TestSupport::StartedProgram host( words );
      const int exitCode = host.wait();
      return { exitCode, host.output(), host.errors() };
   }

   RunningBoard board_{ "kelt" };
   const TestSupport::PrivateFolder folder_;
};

TEST_F( ModuleCommandTest, ReadsAModuleItselfAndWarnsWhereNoServeRuns ) {
   const Ran ran = board_.host( { "module", "qsfp1" } );
   EXPECT_EQ( ran.exitCode, 0 ) << ran.errors;
   EXPECT_THAT( ran.output, AllOf( StartsWith( "qsfp1: QSFP28, read 0 s ago\n" ),
                                   HasSubstr( "part          OQ-100G-SR4, revision B1\n" ),
                                   HasSubstr( "\nrx_power_4 " ) ) );
   EXPECT_THAT( ran.errors, HasSubstr( warning ) );
}

TEST_F( ModuleCommandTest, PrintsWhatServeHasReadAndReadsNothing ) {
   const auto serve = board_.serve( { "--period", "0.2" } );
   Ran ran = board_.host( { "module", "qsfp1" } );
   while ( ran.output.find( "rx_power_1" ) == std::string::npos )
      ran = board_.host( { "module", "qsfp1" } );
   EXPECT_EQ( ran.exitCode, 0 );
   EXPECT_THAT( ran.errors, Not( HasSubstr( warning ) ) );
   Ran json = board_.host( { "module", "sfp3", "--json" } );
   while ( json.output.find( "standard" ) == std::string::npos ) // it is read later
      json = board_.host( { "module", "sfp3", "--json" } );
   EXPECT_THAT( json.output, AllOf( StartsWith( R"({"cage":"sfp3","state":"ok")" ),
                                    HasSubstr( R"("standard":"SFF-8472")" ) ) );
}

TEST_F( ModuleCommandTest, ShowsEachModuleOnALineAndCountsTheEmptyCages ) {
   const Ran ran = board_.host( { "modules" } );
   EXPECT_EQ( ran.exitCode, 0 ) << ran.errors;
   EXPECT_THAT( ran.output, AllOf( StartsWith( "CAGE " ), HasSubstr( "\nsfp48  " ),
                                   HasSubstr( "400GBASE-DR4" ), Not( HasSubstr( "\nqsfp3 " ) ),
                                   HasSubstr( "\n28 of 86 cages are empty\n" ) ) );
}

// What show and health read must not clear the flags of whoever watches over the modules.
TEST_F( ModuleCommandTest, OtherCommandsReadNoModules ) {
   board_.host( { "show" } );
   board_.host( { "health" } );
   const auto before = board_.smbus( { "trace", "--last", "scd(4):2:0" } );
   EXPECT_THAT( before, Not( HasSubstr( "0x50" ) ) );
   board_.host( { "module", "qsfp1" } );
   EXPECT_THAT( board_.smbus( { "trace", "--last", "scd(4):2:0" } ), HasSubstr( "0x50" ) );
}

TEST_F( ModuleCommandTest, ItsRawBytesAreAFileThatIsDecodedElsewhere ) {
   for ( const char *cage : { "qsfp1", "qsfp36", "sfp1", "sfp12" } ) {
      const Ran raw = board_.host( { "module", cage, "--raw" } );
      EXPECT_EQ( raw.exitCode, 0 ) << raw.errors;
      folder_.write( "image", raw.output );
      const Ran file = alone( { "--file", folder_.file( "image" ), "--json" } );
      EXPECT_EQ( file.exitCode, 0 ) << file.errors;
      EXPECT_THAT( file.output, HasSubstr( "Orbis Optics" ) ) << cage;
      EXPECT_THAT( file.output, HasSubstr( R"("cage":"")" ) );
      EXPECT_THAT( file.output, Not( HasSubstr( R"("findings")" ) ) ) << cage;
   }
   EXPECT_THAT( board_.host( { "module", "qsfp1", "--hex" } ).output,
                AllOf( StartsWith( "  0: 11 08 " ), HasSubstr( "page 03h\n128: " ) ) );
}

TEST_F( ModuleCommandTest, AnEmptyCageIsToldAndAFailure ) {
   const Ran ran = board_.host( { "module", "qsfp3" } );
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_EQ( ran.output, "qsfp3: absent\n" );
}

TEST_F( ModuleCommandTest, WrongWordsAreErrorsThatNameThem ) {
   const Ran name = board_.host( { "module", "qspf1" } );
   EXPECT_EQ( name.exitCode, 2 );
   EXPECT_THAT( name.errors, HasSubstr( "has no cage \"qspf1\" (did you mean \"qsfp1\"?)" ) );
   EXPECT_EQ( alone( {} ).exitCode, 2 );
   EXPECT_EQ( board_.host( { "module", "qsfp1", "--json", "--raw" } ).exitCode, 2 );
   EXPECT_EQ( board_.host( { "module", "qsfp1", "--standard", "8636" } ).exitCode, 2 );

   folder_.write( "text", "hello" );
   const Ran text = alone( { "--file", folder_.file( "text" ) } );
   EXPECT_EQ( text.exitCode, 2 );
   EXPECT_THAT( text.errors, AllOf( HasSubstr( "/text: " ), HasSubstr( "68h" ) ) );
   folder_.write( "empty", "" );
   const Ran empty = alone( { "--file", folder_.file( "empty" ) } );
   EXPECT_EQ( empty.exitCode, 2 );
   EXPECT_THAT( empty.errors, HasSubstr( "/empty: " ) );
}

TEST_F( ModuleCommandTest, APlugInThatCantBeLoadedIsThatExitCode ) {
   for ( const char *command : { "module", "modules" } ) {
      std::vector<std::string> words{
         ORBIS_HOST, "--plugin", "none.so", "--drivers", BOARDS "/libOrbisDriversKelt.drivers.json",
         command
      };
      if ( command == std::string( "module" ) )
         words.insert( words.end(), { "qsfp1", "--board" } );
      words.emplace_back( BOARDS "/kelt" );
      TestSupport::StartedProgram host( words );
      EXPECT_EQ( host.wait(), 4 ) << command;
      EXPECT_EQ( host.output(), "" );
   }
}

TEST_F( ModuleCommandTest, ABoardThatNamesNoModuleIsTold ) {
   TestSupport::StartedProgram host( { ORBIS_HOST, "--drivers",
                                       SCRIPTED_BOARD "/libScriptedPlugin.drivers.json", "modules",
                                       SCRIPTED_BOARD } );
   EXPECT_EQ( host.wait(), 2 );
   EXPECT_THAT( host.errors(), HasSubstr( "names no \"module\" for any cage" ) );
}

} // namespace
