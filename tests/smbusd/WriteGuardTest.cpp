// Who may write what, and what is told of it.
#include "smbusd/rights/WriteGuard.h"

#include "PrivateFolder.h"
#include "Requests.h"
#include "smbus/Decode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SmbusdTest {
namespace {

using namespace Smbusd;
using namespace TestSupport;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using TestSupport::read; // not the system's

constexpr uid_t ownUser = 998;
// A machine with alice (1000), and bob (1001) in the group bench (50).
People people() {
   return { .user = []( const std::string &name ) -> std::optional<uid_t> {
              return name == "alice" ? std::optional<uid_t>( 1000 ) : std::nullopt;
           },
            .group = []( const std::string &name ) -> std::optional<gid_t> {
               return name == "bench" ? std::optional<gid_t>( 50 ) : std::nullopt;
            },
            .groupsOf =
               []( const Peer &peer ) {
                  return peer.user == 1001 ? std::vector<gid_t>{ 1001, 50 }
                                           : std::vector<gid_t>{ peer.user };
               },
            .nameOf =
               []( uid_t user ) {
                  return user == 0      ? "root"
                         : user == 1000 ? "alice"
                         : user == 1001 ? "bob"
                                        : "orbis";
               },
            .programOf = []( pid_t process ) { return process == 42 ? "orbis-smbus" : ""; } };
}

class WriteGuardTest : public ::testing::Test {
 protected:
   const Bus::RootBusId scd_ = *Bus::parseRootBusId( "scd(4):1:2" );
   static constexpr Peer alice{ .socket = -1, .user = 1000, .process = 42 };
   static constexpr Peer bob{ .socket = -1, .user = 1001, .process = 43 };

   WriteGuard guard( const std::string &rows ) {
      const std::string file = folder_.write( "writes.json", "{ \"writes\": [ " + rows + " ] }" );
      return make( BoardFiles::loadWritePolicy( file ) );
   }
   WriteGuard make( std::optional<BoardFiles::WritePolicy> policy ) {
      return { { { scd_, { 0x70 } } },
               std::move( policy ),
               ownUser,
               people(),
               [this]( const std::string &words ) { told_.push_back( words ); } };
   }
   template <typename... Requests>
   static Bus::Transaction of( const Requests &...requests ) {
      return Bus::decode( transaction( requests... ), std::chrono::seconds( 1 ) );
   }
   template <typename... Requests>
   static std::string ask( const WriteGuard &guard, const Peer &peer,
                           const Requests &...requests ) {
      try {
         guard.check( of( requests... ), peer );
      } catch ( const Bus::Refused &why ) {
         return why.what();
      }
      return "passes";
   }
   static Smbus::Request write( uint32_t at, const std::string &data, uint8_t address = 0x48 ) {
      return request( Smbus::REQUEST_WRITE, address, at, static_cast<uint32_t>( data.size() ),
                      data );
   }

   const std::string alicesRow_ =
      R"({ "user": "alice", "bus": "scd(4):1:2", "via": "0x70=1", "address": 72,
           "registers": [ { "first": 2, "last": 3, "bytes": 2 } ], "reason": "thresholds" })";
   const std::string benchRow_ =
      R"({ "group": "bench", "bus": "scd(4):1:2", "address": 80,
           "registers": [ { "first": 1 } ], "reason": "memory of the bench" })";
   const Smbus::Request open_ = sendByte( 0x70, 1 ), close_ = sendByte( 0x70, 0 );
   TestSupport::PrivateFolder folder_;
   std::vector<std::string> told_;
};

TEST_F( WriteGuardTest, WithoutAPolicyEverybodyWrites ) {
   EXPECT_EQ( ask( make( {} ), alice, write( 2, "x" ) ), "passes" );
}

TEST_F( WriteGuardTest, AnEmptyPolicyLetsOnlyTheServersUserWrite ) {
   const WriteGuard nobody = guard( "" );
   EXPECT_EQ( ask( nobody, { .socket = -1, .user = ownUser, .process = 1 }, write( 2, "x" ) ),
              "passes" );
   EXPECT_EQ( ask( nobody, alice, read( 0x48, 0, 2 ) ), "passes" );
   EXPECT_THAT( ask( nobody, { .socket = -1, .user = 0, .process = 1 }, write( 2, "x" ) ),
                HasSubstr( "root (user 0, process 1) has no right to it" ) );
}

TEST_F( WriteGuardTest, ARowHoldsForItsUserItsPlaceAndItsRegisters ) {
   const WriteGuard some = guard( alicesRow_ );
   EXPECT_EQ( ask( some, alice, open_, write( 2, "ab" ), write( 3, "a" ), close_ ), "passes" );
   EXPECT_THAT( ask( some, bob, open_, write( 2, "ab" ), close_ ), HasSubstr( "no right" ) );
   EXPECT_THAT( ask( some, alice, write( 2, "ab" ) ), HasSubstr( "no right" ) ); // not behind 0x70
   EXPECT_THAT( ask( some, alice, sendByte( 0x70, 2 ), write( 2, "ab" ), close_ ),
                HasSubstr( "no right" ) ); // another channel
   EXPECT_THAT( ask( some, alice, open_, write( 2, "ab", 0x49 ), close_ ),
                HasSubstr( "no right" ) );
   EXPECT_THAT( ask( some, alice, open_, write( 1, "a" ), close_ ), HasSubstr( "no right" ) );
   EXPECT_THAT( ask( some, alice, open_, write( 4, "a" ), close_ ), HasSubstr( "no right" ) );
   EXPECT_THAT( ask( some, alice, open_, write( 2, "abc" ), close_ ), HasSubstr( "no right" ) );
   Smbus::Request elsewhere = write( 2, "a" );
   elsewhere.set_pci( 5 );
   EXPECT_THAT( ask( some, alice, elsewhere ), HasSubstr( "no right" ) );
}

TEST_F( WriteGuardTest, ARowOfAGroupHoldsForItsMembers ) {
   const WriteGuard some = guard( benchRow_ );
   EXPECT_EQ( ask( some, bob, write( 1, "x", 0x50 ) ), "passes" );
   EXPECT_THAT( ask( some, alice, write( 1, "x", 0x50 ) ), HasSubstr( "no right" ) );
}

TEST_F( WriteGuardTest, ARefusalTellsTheRowThatWouldBeNeededAndTheChipsOthers ) {
   const std::string why = ask( guard( alicesRow_ ), bob, open_, write( 0x10, "abc" ), close_ );
   EXPECT_THAT( why, HasSubstr( "request 2 of 3: write of 3 bytes to 0x48 register 0x10 on "
                                "scd(4):1:2: bob (user 1001, process 43) has no right to it" ) );
   const size_t begin = why.find( '{' ), end = why.rfind( '}' );
   const std::string row = why.substr( begin, end + 1 - begin );
   EXPECT_EQ( row, R"({ "user": "bob", "bus": "scd(4):1:2", "via": "0x70=1", "address": 72, )"
                   R"("registers": [ { "first": 16, "bytes": 3 } ], "reason": "..." })" );
   folder_.write( "more.json", "{ \"writes\": [ " + row + " ] }" );
   EXPECT_EQ( BoardFiles::loadWritePolicy( folder_.file( "more.json" ) ).rows.size(), 1u );
   EXPECT_THAT( why, HasSubstr( "this chip has a row for user alice: 0x48 behind 0x70=1 on "
                                "scd(4):1:2, 0x02 to 0x03: 2 bytes: thresholds" ) );
}

TEST_F( WriteGuardTest, MultiplexersAreSetWithoutARowButNotLeftOpen ) {
   const WriteGuard nobody = guard( "" );
   EXPECT_EQ( ask( nobody, alice, open_, read( 0x48, 0, 2 ), close_ ), "passes" );
   EXPECT_THAT( ask( nobody, alice, open_ ), HasSubstr( "leaves the multiplexer 0x70" ) );
   EXPECT_THAT( ask( nobody, alice, sendByte( 0x58, 3 ) ), HasSubstr( "no right" ) );
}

TEST_F( WriteGuardTest, TellsRawWritesWithWhoWhatAndTheAnswer ) {
   const WriteGuard some = guard( alicesRow_ );
   Smbus::TransactionResponse response;
   for ( int i = 0; i < 3; ++i )
      response.add_response();
   some.passed( of( open_, write( 2, "ab" ), close_ ), response, alice );
   EXPECT_THAT(
      told_, ElementsAre(
                AllOf( HasSubstr( "raw write by alice (user 1000, process 42 orbis-smbus): write "
                                  "of 2 bytes to 0x48 register 0x02 behind 0x70=1 on "
                                  "scd(4):1:2: 0x61 0x62: done; allowed at " ),
                       HasSubstr( "writes.json:1:15: thresholds" ) ) ) );
   told_.clear();
   Smbus::TransactionResponse failed = Bus::failure( "no acknowledge" );
   failed.add_response();
   make( {} ).passed( of( open_, write( 2, "a" ), write( 3, "b" ), close_ ), failed, alice );
   EXPECT_THAT( told_, ElementsAre( HasSubstr( "0x61: no acknowledge" ),
                                    HasSubstr( "0x62: not carried out" ) ) );
}

TEST_F( WriteGuardTest, TellsNeitherReadsNorTheServersOwnWrites ) {
   const WriteGuard all = make( {} );
   Smbus::TransactionResponse response;
   all.passed( of( read( 0x48, 0, 1 ) ), response, alice );
   all.passed( of( write( 2, "a" ) ), response, { .socket = -1, .user = ownUser, .process = 1 } );
   EXPECT_THAT( told_, IsEmpty() );
}

TEST_F( WriteGuardTest, ARowForNobodyIsTold ) {
   guard( R"({ "user": "carol", "bus": "i2c:0", "address": 80, "registers": [ { "first": 1 } ],
               "reason": "r" })" );
   EXPECT_THAT( told_, ElementsAre( HasSubstr( "there is no user carol here" ) ) );
}

class WritePolicyTest : public WriteGuardTest {
 protected:
   std::string wrong( const std::string &row ) {
      try {
         guard( row );
      } catch ( const BoardFiles::BoardError &error ) {
         return error.what();
      }
      return "none";
   }
};

TEST_F( WritePolicyTest, ErrorsTellThePlaceAndTheReason ) {
   const std::string end = R"("address": 80, "registers": [ { "first": 1 } ], "reason": "r" })";
   EXPECT_THAT( wrong( R"({ "user": "a", "bus": "nonsense", )" + end ),
                HasSubstr( "writes.json:1:37: \"nonsense\" is not a bus" ) );
   EXPECT_THAT( wrong( R"({ "user": "a", "bus": "i2c:0", "via": "0x70", )" + end ),
                HasSubstr( "does not name multiplexers" ) );
   EXPECT_THAT( wrong( R"({ "bus": "i2c:0", )" + end ), HasSubstr( "writes.json:1:15: " ) );
   EXPECT_THAT( wrong( R"({ "user": "a", "bus": "i2c:0", "address": 80,
                            "registers": [ { "first": 3, "last": 2 } ], "reason": "r" })" ),
                HasSubstr( "writes.json:2:44: the last register, 2, is before the first, 3" ) );
}

} // namespace
} // namespace SmbusdTest
