#include "http/Guard.h"

#include "PrivateFolder.h"

#include <boost/asio/ip/host_name.hpp>
#include <fstream>
#include <gmock/gmock.h>

namespace Http {
namespace {

using ::testing::HasSubstr;

class GuardTest : public ::testing::Test {
 protected:
   // A file that its owner alone may read.
   std::string file( const std::string &content ) const {
      std::ofstream( path_ ) << content;
      std::filesystem::permissions( path_, std::filesystem::perms::owner_read |
                                              std::filesystem::perms::owner_write );
      return path_;
   }
   // The status and the words of a refusal, or "answered".
   static std::string refusal( const Guard &guard, const std::string &method,
                               const Credentials &credentials ) {
      const auto refused = guard.refusal( method, credentials );
      return refused ? std::to_string( refused->status ) + " " + refused->body : "answered";
   }
   std::string get( const Credentials &credentials ) const {
      return refusal( Guard(), "GET", credentials );
   }
   static std::string whyNot( const std::string &tokenFile ) {
      try {
         const Guard guard( tokenFile );
      } catch ( const std::runtime_error &wrong ) {
         return wrong.what();
      }
      return "a guard";
   }

   const TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "token" );
};

TEST_F( GuardTest, ThisMachinesNamesAreAnswered ) {
   for ( const std::string host : { "127.0.0.1", "127.0.0.1:8080", "localhost:8080", "LOCALHOST",
                                    "[::1]:8080", "10.1.2.3" } )
      EXPECT_EQ( get( { .host = host } ), "answered" ) << host;
   const std::string machine = boost::asio::ip::host_name();
   EXPECT_EQ( get( { .host = machine + ":8080" } ), "answered" );
}

// A page of somewhere else may have its own name lead to this machine.
TEST_F( GuardTest, AnotherNameIsRefused ) {
   for ( const std::string host : { "example.com", "example.com:8080", "", "localhost.example.com",
                                    "[::1", "127.0.0.1.example.com" } )
      EXPECT_THAT( get( { .host = host } ), HasSubstr( "421 " ) ) << host;
   EXPECT_THAT( get( { .host = boost::asio::ip::host_name() + ".example.com" } ),
                HasSubstr( "421 " ) );
}

TEST_F( GuardTest, APageOfAnotherServerIsRefused ) {
   EXPECT_EQ( get( { .host = "localhost:80", .origin = "http://localhost:80" } ), "answered" );
   for ( const std::string origin : { "http://example.com", "http://localhost:81", "null" } )
      EXPECT_THAT( get( { .host = "localhost:80", .origin = origin } ), HasSubstr( "403 " ) )
         << origin;
}

TEST_F( GuardTest, WithoutATokenOneCanOnlyRead ) {
   const Guard guard;
   EXPECT_EQ( refusal( guard, "HEAD", { .host = "localhost" } ), "answered" );
   EXPECT_THAT( refusal( guard, "POST", { .host = "localhost", .authorization = "Bearer " } ),
                HasSubstr( "403 " ) );
}

TEST_F( GuardTest, WhoHasTheTokenMayAct ) {
   const Guard guard( file( "0123456789abcdef\r\nanother line\n" ) );
   const auto post = [&]( const std::string &authorization ) {
      return refusal( guard, "POST", { .host = "localhost", .authorization = authorization } );
   };
   EXPECT_EQ( post( "Bearer 0123456789abcdef" ), "answered" );
   EXPECT_EQ( post( "bearer 0123456789abcdef" ), "answered" );
   for ( const char *wrong : { "", "Bearer 0123456789abcdeg", "Bearer 0123456789abcde",
                               "Bearer another line", "Basic 0123456789abcdef" } )
      EXPECT_THAT( post( wrong ), HasSubstr( "401 " ) ) << wrong;
   EXPECT_EQ( refusal( guard, "GET", { .host = "localhost" } ), "answered" );
}

TEST_F( GuardTest, ATokenThatIsNoSecretIsNotTaken ) {
   EXPECT_THAT( whyNot( folder_.file( "none" ) ), HasSubstr( "none: can't read a token from it" ) );
   EXPECT_THAT( whyNot( file( "" ) ), HasSubstr( "can't read a token from it" ) );
   EXPECT_THAT( whyNot( file( "0123456789abcde" ) ),
                HasSubstr( "has 15 characters; it needs 16" ) );
   file( "0123456789abcdef" );
   std::filesystem::permissions( path_, std::filesystem::perms::others_read,
                                 std::filesystem::perm_options::add );
   EXPECT_THAT( whyNot( path_ ), HasSubstr( "every user may read this token" ) );
}

} // namespace
} // namespace Http
