#include "boardfiles/Json.h"

#include "PrivateFolder.h"

#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<std::string> findingsIn( const std::string &text ) {
   Findings findings;
   parseJson( text, "f.json", findings );
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

TEST( JsonTest, ReportsEveryKeyThatIsTwiceInOneObject ) {
   EXPECT_THAT( findingsIn( R"([ { "a": 1, "b": { "c": 1, "c": 2 }, "a": { "b": 1 } } ])" ),
                ElementsAre( "f.json:1:28: \"c\" is twice in one object",
                             "f.json:1:38: \"a\" is twice in one object" ) );
}

TEST( JsonTest, GivesThePlaceInsideLists ) {
   EXPECT_THAT( findingsIn( R"([ 0, [ "x", { "k": 1, "k": 1 } ] ])" ),
                ElementsAre( "f.json:1:23: \"k\" is twice in one object" ) );
}

TEST( JsonTest, RefusesNulBytesInTheFileAndInsideTexts ) {
   EXPECT_THAT( findingsIn( std::string( "[\n \0 ]", 6 ) ),
                ElementsAre( "f.json:2:2: a NUL byte" ) );
   EXPECT_THAT( findingsIn( R"([ "a\u0000b" ])" ),
                ElementsAre( "f.json:1:3: a NUL byte inside a text" ) );
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

TEST( JsonTest, NamesTheUsualSlips ) {
   EXPECT_THAT( findingsIn( "{ // no\n}" ), ElementsAre( "f.json:1:3: a comment; JSON has none" ) );
   EXPECT_THAT( findingsIn( "[ 1, /* no */ 2 ]" ),
                ElementsAre( "f.json:1:6: a comment; JSON has none" ) );
   EXPECT_THAT( findingsIn( "{ 'a': 1 }" ),
                ElementsAre( "f.json:1:3: a single quote; JSON has texts in double quotes" ) );
   EXPECT_THAT( findingsIn( "{ \"a\": 'b' }" ),
                ElementsAre( "f.json:1:8: a single quote; JSON has texts in double quotes" ) );
   EXPECT_THAT( findingsIn( "[ 1,\n]" ),
                ElementsAre( "f.json:2:1: a comma before the closing ]" ) );
   EXPECT_THAT( findingsIn( "\xEF\xBB\xBF[]" ),
                ElementsAre( "f.json:1:1: the file starts with a byte-order mark; save it as UTF-8 "
                             "without one" ) );
}

TEST( JsonTest, KnowsThePlaceAndTheTextOfEveryValue ) {
   Findings findings;
   const auto json =
      parseJson( "{\n   \"a\": [ 1.50, \"b\\u00e9\" ],\n   \"c\": { }\n}", "f.json", findings );
   ASSERT_TRUE( json );
   const Json &list = *json->find( "a" );
   EXPECT_EQ( toText( list.place() ), "f.json:2:9" );
   EXPECT_EQ( list.source(), "[ 1.50, \"b\\u00e9\" ]" );
   EXPECT_EQ( toText( list.elements()[0].place() ), "f.json:2:11" );
   EXPECT_EQ( list.elements()[0].source(), "1.50" );
   EXPECT_EQ( list.elements()[1].pointer(), "/a/1" );
   EXPECT_EQ( list.elements()[1].toText(), "b\xC3\xA9" );
   EXPECT_EQ( toText( json->find( "c" )->place() ), "f.json:3:9" );
   EXPECT_EQ( json->find( "c" )->source(), "{ }" );
}

TEST( JsonTest, KnowsThePlacesInsideAJsonTextInsideAText ) {
   Findings findings;
   const auto json =
      parseJson( R"([ "{ \"a\": \"\u00e9\\n\",\n \"b\": 12 }" ])", "f.json", findings );
   ASSERT_TRUE( json );
   const auto inside = parseInside( json->elements()[0], findings );
   ASSERT_TRUE( inside );
   EXPECT_EQ( inside->find( "b" )->source(), "12" );
   EXPECT_EQ( toText( inside->find( "b" )->place() ), "f.json:1:37" );
   EXPECT_EQ( inside->find( "b" )->pointer(), "/0/b" );
   EXPECT_FALSE( parseInside( *parseJson( R"("[ 1, \"a\" x ]")", "f.json", findings ), findings ) );
   ASSERT_EQ( findings.size(), 1u );
   EXPECT_EQ( toText( findings[0] ),
              "f.json:1:13: Missing a comma or ']' after an array element." );
}

TEST( JsonTest, TellsWholeNumbersFromOthers ) {
   Findings findings;
   const auto json = parseJson( "[ 4294967295, 4294967296, -1, 1.0, 1e3, \"1\" ]", "f", findings );
   const auto numbers = json->elements();
   EXPECT_EQ( numbers[0].toUnsigned(), 4294967295u );
   for ( size_t i = 1; i < numbers.size(); ++i )
      EXPECT_FALSE( numbers[i].toUnsigned() ) << i;
   EXPECT_EQ( numbers[2].toInteger(), -1 );
   EXPECT_EQ( numbers[4].toNumber(), 1000.0 );
}

TEST( JsonTest, SaysWhyAFileCanNotBeRead ) {
   const TestSupport::PrivateFolder folder;
   Findings findings;
   EXPECT_FALSE( readJson( folder.path() / "missing.json", findings ) );
   EXPECT_FALSE( readJson( folder.path(), findings ) );
   ASSERT_EQ( findings.size(), 2u );
   EXPECT_EQ( findings[0].reason, "no such file" );
   EXPECT_EQ( findings[1].reason, "not a file" );
}

} // namespace
} // namespace BoardFilesTest
