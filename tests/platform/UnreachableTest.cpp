#include "sockets/Unreachable.h"
#include "PrivateFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <grp.h>
#include <unistd.h>

namespace PlatformTest {

namespace {

using Sockets::whyUnreachable;

TEST( UnreachableTest, NamesTheSocketAndWhatToDo ) {
   EXPECT_EQ( whyUnreachable( "/run/x.sock", ENOENT ),
              "/run/x.sock: there is no such socket; is its server running?" );
   EXPECT_EQ( whyUnreachable( "/run/x.sock", ECONNREFUSED ),
              "/run/x.sock: its server has ended; start it again" );
   EXPECT_EQ( whyUnreachable( "/run/x.sock", ETIMEDOUT ), "/run/x.sock: Connection timed out" );
}

TEST( UnreachableTest, NamesTheGroupThatMayUseTheSocket ) {
   const TestSupport::PrivateFolder folder;
   const std::string path = folder.write( "x.sock", "" );
   const group *own = getgrgid( getgid() );
   ASSERT_NE( own, nullptr );
   EXPECT_EQ( whyUnreachable( path, EACCES ),
              path + ": permission denied; root and members of the group " + own->gr_name +
                 " may use it" );
   EXPECT_EQ( whyUnreachable( "/no/folder/x.sock", EACCES ),
              "/no/folder/x.sock: permission denied; other users may use it" );
}

} // namespace

} // namespace PlatformTest
