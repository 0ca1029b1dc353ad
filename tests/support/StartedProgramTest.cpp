#include "StartedProgram.h"
#include "PrivateFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace TestSupport {

namespace {

TEST( StartedProgramTest, DoesNotReadTheTestsOwnInput ) {
   int ends[2];
   ASSERT_EQ( pipe( ends ), 0 );
   ASSERT_EQ( write( ends[1], "mine", 4 ), 4 );
   close( ends[1] );
   const int input = dup( STDIN_FILENO );
   dup2( ends[0], STDIN_FILENO );
   StartedProgram cat( { "/bin/cat" } );
   dup2( input, STDIN_FILENO );
   EXPECT_EQ( cat.wait(), 0 );
   EXPECT_EQ( cat.output(), "" );
   close( input );
   close( ends[0] );
}

TEST( StartedProgramTest, ReadsBothOutputsAndTheExitCode ) {
   StartedProgram shell( { "/bin/sh", "-c", "echo out; echo err >&2; exit 3" } );
   EXPECT_EQ( shell.wait(), 3 );
   EXPECT_EQ( shell.output(), "out\n" );
   EXPECT_EQ( shell.errors(), "err\n" );
}

TEST( StartedProgramTest, ReturnsTheSignalThatEndedItAsANegativeNumber ) {
   StartedProgram sleep( { "/bin/sleep", "100" } );
   sleep.signal( SIGTERM );
   EXPECT_EQ( sleep.wait(), -SIGTERM );
}

TEST( StartedProgramTest, WritesBothOutputsIntoOneFile ) {
   const PrivateFolder folder;
   folder.write( "all", "of an earlier run" );
   StartedProgram shell(
      { "/bin/sh", "-c", "echo out; echo err >&2" },
      { .outputFile = folder.file( "all" ), .errorFile = folder.file( "all" ) } );
   EXPECT_EQ( shell.wait(), 0 );
   EXPECT_EQ( folder.read( "all" ), "out\nerr\n" );
   EXPECT_EQ( folder.waitFor( "all", "out\n" ), 4u );
}

TEST( StartedProgramTest, ChangesTheEnvironmentOfTheProgramAlone ) {
   setenv( "ORBIS_TEST_A", "old", 1 );
   setenv( "ORBIS_TEST_B", "kept", 1 );
   StartedProgram shell( { "/bin/sh", "-c", "echo $ORBIS_TEST_A $ORBIS_TEST_B" },
                         { .environment = { "ORBIS_TEST_A=new" } } );
   EXPECT_EQ( shell.wait(), 0 );
   EXPECT_EQ( shell.output(), "new kept\n" );
   EXPECT_STREQ( getenv( "ORBIS_TEST_A" ), "old" );
   unsetenv( "ORBIS_TEST_A" );
   unsetenv( "ORBIS_TEST_B" );
}

TEST( StartedProgramTest, GivesATerminalToTypeAtAndToLookAt ) {
   StartedProgram shell( { "/bin/sh", "-c", "test -t 0 -a -t 1 -a -t 2 && read x && echo got $x" },
                         { .onTerminal = true } );
   shell.type( "keys\n" );
   shell.waitForScreen( "got keys" );
   EXPECT_EQ( shell.wait(), 0 );
}

TEST( StartedProgramTest, ThrowsForAProgramThatIsNotThere ) {
   EXPECT_THROW( StartedProgram( { "/nowhere" } ), std::runtime_error );
}

} // namespace

} // namespace TestSupport
