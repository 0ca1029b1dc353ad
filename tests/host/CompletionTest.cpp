#include "PrivateFolder.h"
#include "StartedProgram.h"
#include "host/plugin/Action.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <sstream>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

class CompletionTest : public ::testing::Test {
 protected:
   // The completions for the last of these words.
   std::vector<std::string> complete( const std::vector<std::string> &words ) const {
      folder_.write( "ask.sh",
                     fmt::format( ". {}\nCOMP_WORDS=( {} {} )\nCOMP_CWORD={}\n"
                                  "_orbis\nprintf '%s\\n' \"${{COMPREPLY[@]}}\"\n",
                                  COMPLETION, ORBIS_HOST, fmt::join( words, " " ), words.size() ) );
      TestSupport::StartedProgram bash( { "/bin/bash", folder_.file( "ask.sh" ) } );
      EXPECT_EQ( bash.wait(), 0 );
      EXPECT_EQ( bash.errors(), "" );
      std::istringstream lines( bash.output() );
      std::vector<std::string> offered;
      for ( std::string line; std::getline( lines, line ); )
         offered.push_back( line );
      return offered;
   }

   const TestSupport::PrivateFolder folder_;
};

TEST_F( CompletionTest, OffersCommandsAndOptions ) {
   EXPECT_THAT( complete( { "s" } ), UnorderedElementsAre( "show", "serve", "smbus", "system" ) );
   EXPECT_THAT( complete( { "serve", "--per" } ), ElementsAre( "--period", "--period-of" ) );
   EXPECT_THAT( complete( { "system", "power" } ), ElementsAre( "powercycle", "poweroff" ) );
}

TEST_F( CompletionTest, OffersTheBoardsObjectsOfTheCommandsType ) {
   EXPECT_THAT( complete( { "fan", "--board", SCRIPTED_BOARD, "p" } ), ElementsAre( "pair" ) );
   EXPECT_THAT( complete( { "why", "--board", SCRIPTED_BOARD, "p" } ), // of every type
                UnorderedElementsAre( "pair", "proxy", "psu" ) );
   EXPECT_THAT( complete( { "xcvr", "--board", SCRIPTED_BOARD, "''" } ),
                ElementsAre( "sfp", "qsfp" ) );
   EXPECT_THAT( complete( { "xcvr", "--board", SCRIPTED_BOARD, "sfp", "reset", "o" } ),
                UnorderedElementsAre( "on", "off" ) );
}

TEST_F( CompletionTest, OffersEveryVerb ) {
   const std::vector<std::pair<std::string, BoardFiles::Kind>> kinds{
      { "xcvr", BoardFiles::Kind::Xcvr },
      { "gpio", BoardFiles::Kind::Gpio },
      { "smbus", BoardFiles::Kind::Smbus }
   };
   for ( const auto &[command, kind] : kinds ) {
      std::vector<std::string> verbs;
      for ( const std::string &usage : usageOf( kind ) )
         verbs.push_back( usage.substr( 0, usage.find( ' ' ) ) );
      EXPECT_THAT( complete( { command, "x", "''" } ),
                   ::testing::UnorderedElementsAreArray( verbs ) );
   }
   EXPECT_THAT( complete( { "led", "x", "be" } ), ElementsAre( "beacon" ) );
}

} // namespace
} // namespace Host
