#include "sockets/ControlGroup.h"

#include <gmock/gmock.h>

#include <grp.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>

namespace Sockets {
namespace {

using ::testing::HasSubstr;

constexpr uid_t daemon = 998;
constexpr uid_t stranger = 4'000'000; // without a name

class ControlGroupTest : public ::testing::Test {
 protected:
   // A group of this machine.
   const gid_t gid_ = getgid();
   const std::string name_ = getgrgid( gid_ )->gr_name;
   const ControlGroup group_{ name_, daemon };
};

TEST_F( ControlGroupTest, TheServersUserAndRootMayAct ) {
   for ( const ControlGroup &group : { group_, ControlGroup( "", daemon ) } ) {
      EXPECT_TRUE( group.has( { .user = daemon } ) );
      EXPECT_TRUE( group.has( { .user = 0 } ) );
      EXPECT_FALSE( group.has( { .user = stranger, .group = gid_ + 1 } ) );
      EXPECT_FALSE( group.has( {} ) ); // the kernel tells nothing
   }
}

TEST_F( ControlGroupTest, MembersMayActByAnyOfTheirGroups ) {
   EXPECT_TRUE( group_.has( { .user = stranger, .group = gid_ } ) );
   EXPECT_TRUE( group_.has( { .user = stranger, .group = 7, .groups = { 8, gid_, 9 } } ) );
   EXPECT_FALSE( group_.has( { .user = stranger, .group = 7, .groups = { gid_ + 1 } } ) );
   EXPECT_FALSE( ControlGroup( "", daemon ).has( { .user = stranger, .group = gid_ } ) );
}

TEST_F( ControlGroupTest, TellsWhoMayNotActAndWhatToDo ) {
   EXPECT_EQ( group_.whyNot( { .user = stranger } ),
              "user 4000000 may only read here; members of the group " + name_ +
                 " may act: root adds 4000000 by \"adduser 4000000 " + name_ +
                 "\", then 4000000 logs in again" );
   EXPECT_THAT( ControlGroup( "", daemon ).whyNot( { .user = stranger } ),
                HasSubstr( "given by --control-group; it runs without" ) );
}

TEST_F( ControlGroupTest, AGroupThatIsNotThereIsAnError ) {
   EXPECT_THROW( ControlGroup( "no-such-group-here" ), std::runtime_error );
}

TEST( CredentialsTest, AreThoseOfTheProcessAtTheOtherEnd ) {
   std::array<int, 2> ends{};
   ASSERT_EQ( socketpair( AF_UNIX, SOCK_STREAM, 0, ends.data() ), 0 );
   const Credentials known = credentialsOf( ends[0] );
   std::vector<gid_t> groups( static_cast<size_t>( getgroups( 0, nullptr ) ) );
   getgroups( static_cast<int>( groups.size() ), groups.data() );
   EXPECT_EQ( known.user, geteuid() );
   EXPECT_EQ( known.group, getegid() );
   EXPECT_EQ( known.process, getpid() );
   EXPECT_EQ( known.groups, groups );
   close( ends[0] );
   close( ends[1] );
}

TEST( CredentialsTest, AUserWithoutANameIsTheNumber ) {
   EXPECT_EQ( nameOf( 0 ), "root" );
   EXPECT_EQ( nameOf( stranger ), "4000000" );
}

} // namespace
} // namespace Sockets
