#include "boardfiles/Json.h"

#include "support/TempFolder.h"

#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<std::string> findingsIn( const std::string &text ) {
   Findings findings;
   Json::parse( text, Place{ "f.json" }, findings );
   std::vector<std::string> texts;
   for ( const Finding &finding : findings )
      texts.push_back( toText( finding ) );
   return texts;
}

TEST( JsonTest, TellsTheLineAndColumnWhereTextDoesNotParse ) {
   EXPECT_THAT( findingsIn( "[\n   1,\n   2 3\n]" ),
                ElementsAre( "f.json:3:6: Missing a comma or ']' after an array element." ) );
   EXPECT_THAT( findingsIn( "" ), ElementsAre( "f.json:1:1: The document is empty." ) );
   EXPECT_THAT( findingsIn( "{" ), ElementsAre( "f.json:1:2: Missing a name for object member." ) );
}

TEST( JsonTest, TellsEveryKeyThatStandsTwiceInOneObject ) {
   EXPECT_THAT( findingsIn( R"([ { "a": 1, "b": { "c": 1, "c": 2 }, "a": { "b": 1 } } ])" ),
                ElementsAre( "f.json:/0/b/c: \"c\" stands twice in one object",
                             "f.json:/0/a: \"a\" stands twice in one object" ) );
}

TEST( JsonTest, CountsTheElementsOfListsInPointers ) {
   EXPECT_THAT( findingsIn( R"([ 0, [ "x", { "k": 1, "k": 1 } ] ])" ),
                ElementsAre( "f.json:/1/1/k: \"k\" stands twice in one object" ) );
}

TEST( JsonTest, RefusesNulBytesInTheFileAndInsideTexts ) {
   EXPECT_THAT( findingsIn( std::string( "[\n \0 ]", 6 ) ),
                ElementsAre( "f.json:2:2: a NUL byte" ) );
   EXPECT_THAT( findingsIn( R"([ "a\u0000b" ])" ),
                ElementsAre( "f.json:/0: a NUL byte inside a text" ) );
   EXPECT_THAT( findingsIn( R"({ "a\u0000b": 1 })" ),
                ElementsAre( HasSubstr( "a NUL byte inside a text" ) ) );
}

TEST( JsonTest, RefusesNestingWithoutEnd ) {
   EXPECT_THAT( findingsIn( std::string( 1'000'000, '[' ) ),
                ElementsAre( "f.json:1:65: nested deeper than 64 levels" ) );
   const std::string deep = std::string( 64, '[' ) + std::string( 64, ']' );
   EXPECT_THAT( findingsIn( deep ), ElementsAre() );
}

TEST( JsonTest, RefusesBytesThatAreNoUtf8 ) {
   EXPECT_THAT( findingsIn( "[ \"\xff\" ]" ),
                ElementsAre( HasSubstr( "f.json:1:4: Invalid encoding" ) ) );
}

TEST( JsonTest, SaysWhyAFileCanNotBeRead ) {
   const TempFolder folder;
   Findings findings;
   EXPECT_FALSE( Json::load( folder.path() / "missing.json", findings ) );
   EXPECT_FALSE( Json::load( folder.path(), findings ) );
   ASSERT_EQ( findings.size(), 2u );
   EXPECT_EQ( findings[0].reason, "No such file or directory" );
   EXPECT_EQ( findings[1].reason, "is not a file" );
}

} // namespace
} // namespace BoardFilesTest
