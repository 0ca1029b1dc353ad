#include "host/session/FaultWords.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

class FaultWordsTest : public ::testing::Test {
 protected:
   FaultWords words{ { "execute: failure in response ", "execute: error. ", "execute: " } };
};

TEST_F( FaultWordsTest, KeepsTheServersWordsWhenOtherTracesFollow ) {
   words.heard( { 3, "execute: failure in response request 2: no acknowledge" } );
   words.heard( { 0, "Error: status 6 reading fan 2 presence bit" } );
   EXPECT_EQ( words.words(), "request 2: no acknowledge" );
   EXPECT_TRUE( words.hasFault() );
}

TEST_F( FaultWordsTest, TakesTheFirstBeginningThatFits ) {
   words.heard( { 3, "execute: error. 111, Connection refused" } );
   EXPECT_EQ( words.words(), "111, Connection refused" );
   words.heard( { 3, "execute: invalid number of response, expecting 5 not 4" } );
   EXPECT_EQ( words.words(), "invalid number of response, expecting 5 not 4" );
}

TEST_F( FaultWordsTest, UsesTheLastTracesOfLevel0WithoutAReason ) {
   for ( const char *text : { "one", "driver X not found", "null object", "create() failed" } )
      words.heard( { 0, text } );
   words.heard( { 5, "detail" } );
   EXPECT_EQ( words.words(), "driver X not found; null object; create() failed" );
   EXPECT_FALSE( words.hasFault() );
}

TEST_F( FaultWordsTest, ForgetsTheTracesOfAnEarlierOperation ) {
   words.heard( { 3, "execute: failure in response x" } );
   words.heard( { 0, "y" } );
   words.operationBegins();
   EXPECT_EQ( words.words(), "" );
}

TEST_F( FaultWordsTest, MakesTextSafeForATerminalAndForJson ) {
   EXPECT_EQ( printable( "a\x1b[31mb\nc\x7f°\xff\xc3" ), "a [31mb c °??" );
   EXPECT_EQ( printable( "" ), "" );
}

} // namespace
} // namespace Host
