// The page's files, as a browser gets them.
#include "host/serve/PageApi.h"

#include "panel/Files.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::Contains;
using ::testing::Pair;

TEST( PageApiTest, EachFileComesWithTheHeadersThatKeepThePageApart ) {
   for ( const Panel::File &file : Panel::files() ) {
      const Http::Response answer = answerPage( {}, file.name );
      EXPECT_EQ( answer.status, 200u );
      EXPECT_EQ( answer.body, file.text );
      EXPECT_EQ( answer.contentType, file.contentType );
      EXPECT_THAT( answer.headers,
                   ::testing::UnorderedElementsAre(
                      Pair( "Cache-Control", "no-cache" ), Pair( "ETag", file.tag ),
                      Pair( "Content-Security-Policy",
                            "default-src 'none'; script-src 'self'; style-src 'self'; img-src "
                            "'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; "
                            "frame-ancestors 'none'" ),
                      Pair( "Referrer-Policy", "no-referrer" ), Pair( "X-Frame-Options", "DENY" ),
                      Pair( "Cross-Origin-Opener-Policy", "same-origin" ),
                      Pair( "Cross-Origin-Resource-Policy", "same-origin" ) ) );
   }
}

TEST( PageApiTest, AFileThatTheBrowserHasIsNotSentAgain ) {
   const Panel::File *file = Panel::find( "main.js" );
   ASSERT_NE( file, nullptr );
   const Http::Response same = answerPage( { .ifNoneMatch = file->tag }, "main.js" );
   EXPECT_EQ( same.status, 304u );
   EXPECT_EQ( same.body, "" );
   EXPECT_THAT( same.headers, Contains( Pair( "ETag", file->tag ) ) );
   EXPECT_THAT( same.headers, Contains( Pair( "Cache-Control", "no-cache" ) ) );
   EXPECT_EQ( answerPage( { .ifNoneMatch = "\"0\"" }, "main.js" ).body, file->text );
}

TEST( PageApiTest, NamesTheFileThatThePageDoesNotHave ) {
   const Http::Response none = answerPage( {}, "x.js" );
   EXPECT_EQ( none.status, 404u );
   EXPECT_EQ( none.body, R"({"error":"the page has no file \"x.js\""})" );
}

} // namespace
} // namespace Host
