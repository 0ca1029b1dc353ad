// orbis-smbus write, to chips that objects of the Kelt board are on.
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SmbusdTest {
namespace {

using ::testing::HasSubstr;
using TestSupport::StartedProgram;

class WriteQuestionTest : public ::testing::Test {
 protected:
   WriteQuestionTest() { EXPECT_TRUE( server_.waitForError( "serving" ) ) << server_.errors(); }

   std::vector<std::string> words( std::vector<std::string> words ) const {
      words.insert( words.begin(), { ORBIS_SMBUS, "--socket", path_ } );
      return words;
   }
   int run( const std::vector<std::string> &command ) {
      StartedProgram program( words( command ) );
      const int code = program.wait();
      errors_ = program.errors();
      return code;
   }
   std::string threshold() const {
      StartedProgram program( words( { "read", chip_, "3", "--size", "2", "--via", "0x70=1" } ) );
      program.wait();
      return program.output();
   }
   const std::vector<std::string> write_{ "write", chip_, "3", "0x19", "0x80", "--via", "0x70=1" };
   std::vector<std::string> writeAnd( std::initializer_list<std::string> more ) const {
      std::vector<std::string> all = write_;
      all.insert( all.end(), more );
      return all;
   }

   inline static const std::string chip_ = "scd(4):1:2:0x48";
   TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "smbus.sock" );
   StartedProgram server_{ { ORBIS_SMBUSD, "--socket", path_, "--simulate",
                             KELT_BOARD "/topology.json", "--simulation",
                             KELT_BOARD "/simulation.json" } };
   std::string errors_;
};

TEST_F( WriteQuestionTest, WithoutATerminalItNeedsYesForAChipWithAnObject ) {
   const std::string before = threshold();
   EXPECT_EQ( run( writeAnd( { "--board", KELT_BOARD } ) ), 1 );
   EXPECT_THAT( errors_, HasSubstr( "nothing was written: on scd(4):1:2:0x48 is temp-front of the "
                                    "board " KELT_BOARD ) );
   EXPECT_EQ( threshold(), before );
   EXPECT_EQ( run( writeAnd( { "--board", KELT_BOARD, "--yes" } ) ), 0 ) << errors_;
   EXPECT_EQ( threshold(), "0x19 0x80\n" );
}

TEST_F( WriteQuestionTest, TheBoardMayBeNamedByTheEnvironment ) {
   StartedProgram program( words( write_ ), { .environment = { "ORBIS_BOARD=" KELT_BOARD } } );
   EXPECT_EQ( program.wait(), 1 );
   EXPECT_THAT( program.errors(), HasSubstr( "is temp-front of the board" ) );
}

TEST_F( WriteQuestionTest, OtherChipsAndChannelsAreWrittenAtOnce ) {
   EXPECT_EQ( run( write_ ), 0 ) << errors_; // no board is named
   EXPECT_EQ( run( { "write", chip_, "3", "1", "--board", KELT_BOARD } ), 1 );
   EXPECT_THAT( errors_, HasSubstr( "no acknowledge" ) ); // asked the bus: the chip is behind 0x70
}

TEST_F( WriteQuestionTest, OnATerminalItAsksAndWritesAfterAYes ) {
   const std::string before = threshold();
   for ( const std::string answer : { "\n", "n\n", "y\n" } ) {
      StartedProgram program( words( writeAnd( { "--board", KELT_BOARD } ) ),
                              { .onTerminal = true } );
      program.waitForScreen( "[y/N]" );
      program.type( answer );
      EXPECT_EQ( program.wait(), answer == "y\n" ? 0 : 1 );
      EXPECT_EQ( threshold(), answer == "y\n" ? "0x19 0x80\n" : before );
   }
}

TEST_F( WriteQuestionTest, ABoardThatCantBeReadIsNoYes ) {
   EXPECT_EQ( run( writeAnd( { "--board", folder_.path() } ) ), 1 );
   EXPECT_THAT( errors_, HasSubstr( "can't tell which objects are on scd(4):1:2:0x48: " ) );
}

} // namespace
} // namespace SmbusdTest
