#include "support/PlayedChild.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;

// Two cages of device 7, one of device 8, a slot and a fan, with their traces in the data file.
class PollsTest : public PlayedChild {
 protected:
   PollsTest() {
      cages.objects = {
         { .kind = BoardFiles::Kind::Xcvr, .name = "a", .did = 7 },
         { .kind = BoardFiles::Kind::Xcvr, .name = "b", .did = 7 },
         { .kind = BoardFiles::Kind::Xcvr, .name = "c", .did = 8 },
         { .kind = BoardFiles::Kind::Slot, .name = "bay", .did = 9, .address = 0x58 },
         { .kind = BoardFiles::Kind::Fan, .name = "fan", .fullScale = 18000 }
      };
      cages.traces.absentHolds = "from {address} ";
      cages.traces.absentEnds = "no acknowledge of the address";
      cages.traces.absentFirst = { "from {address} register 0x9a" };
      cages.traces.unmanaged = "Unknown model";
      cages.traces.unreadable = "Failed to read PSU";
      cages.traces.pollFailed = "Failed to poll";
      cages.traces.pollDone = "Cache updated";
      supervisor.emplace( cages, Limits{}, now );
   }

   // Reads an object with these traces on the way; the one value that comes of it.
   ValueReport read( size_t object, const std::vector<std::string> &traces, const Reading &given ) {
      runTo( "read " + std::to_string( object ) );
      for ( const std::string &text : traces )
         hear( Trace{ 3, text } );
      hear( given );
      good();
      const ObjectReport report = PlayedChild::object( object );
      for ( const ValueReport &value : report.values )
         if ( value.reading.name == given.name )
            return value;
      ADD_FAILURE() << "no " << given.name;
      return {};
   }
   ValueReport readCage( size_t object ) {
      return read( object, {}, { .name = "presence", .value = true } );
   }
   void poll( size_t timerOwner, bool well ) {
      if ( !well )
         hear( Trace{ 3, "execute: failure in response nack", timerOwner } );
      hear( Trace{ 0, well ? "Cache updated for X" : "Failed to poll X", timerOwner } );
   }
   Reading readBay( const std::vector<std::string> &traces ) {
      return read( 3, traces, { .name = "presence", .state = State::Absent, .fault = { 1, "" } } )
         .reading;
   }

   const std::string bus = "execute: failure in response request 3 of 4: read of 1 byte from ";
   const std::string firstMissed = bus + "0x58 register 0x9a: no acknowledge of the address";
   const std::string laterMissed = bus + "0x58 register 0x9e: no acknowledge of the address";
   BoardFiles::Board cages = makeBoard();
};

TEST_F( PollsTest, AreGoodUntilATraceSaysThatOneFailed ) {
   runAll();
   poll( 0, true );
   now += 1s;
   EXPECT_EQ( readCage( 0 ).reading.state, State::Ok );
}

TEST_F( PollsTest, LeaveCagesStaleSinceTheLastPollThatWentWell ) {
   runAll();
   poll( 0, true );
   now += 1s;
   poll( 0, false );
   const ValueReport cage = readCage( 1 ); // of the same device as the one whose add made the timer
   EXPECT_EQ( cage.reading.state, State::Stale );
   EXPECT_EQ( cage.reading.value, Scalar( true ) );
   EXPECT_EQ( cage.age, 1 );
   EXPECT_EQ( cage.reading.fault.words, "nack" );
   EXPECT_EQ( readCage( 2 ).reading.state, State::Ok ); // of another one
   poll( 0, true );
   now += 1s;
   EXPECT_EQ( readCage( 1 ).reading.state, State::Ok );
}

TEST_F( PollsTest, LeaveCagesUnreadableThatNeverWerePolledWell ) {
   runTo( "add 0" );
   hear( Trace{ 3, "execute: failure in response nack" } );
   hear( Trace{ 0, "Failed to poll X" } );
   good();
   const ValueReport cage = readCage( 1 );
   EXPECT_EQ( cage.reading.state, State::Unreadable );
   EXPECT_EQ( cage.reading.value, Scalar() );
   EXPECT_EQ( cage.reading.fault.words, "nack" );
}

TEST_F( PollsTest, AreNotPartOfTheRunningOperation ) {
   runTo( "read 3" );
   poll( 0, false );
   hear( Reading{ .name = "presence", .state = State::Absent } );
   good();
   EXPECT_EQ( supervisor->report( now )[3].values.at( 0 ).reading.state, State::Absent );
}

TEST_F( PollsTest, SlotsAreEmptyWhenTheirModulesMissTheFirstTransferOfManyReads ) {
   for ( int i = 0; i < 4; ++i )
      EXPECT_EQ( readBay( { firstMissed } ).state, State::Unreadable );
   EXPECT_FALSE( supervisor->roundDone() );
   const Reading missed = readBay( { firstMissed } );
   EXPECT_EQ( missed.state, State::Unreadable );
   EXPECT_EQ( missed.fault.status, 1 );
   EXPECT_THAT( missed.fault.words, ::testing::HasSubstr( "no acknowledge" ) );
   runAll();
   EXPECT_TRUE( supervisor->roundDone() );
   now += 1s;
   for ( int i = 0; i < 4; ++i )
      EXPECT_EQ( readBay( { firstMissed } ).state, State::Unreadable );
   const Reading empty = readBay( { firstMissed } );
   EXPECT_EQ( empty.state, State::Absent );
   EXPECT_EQ( empty.fault.words, "no answer to 10 reads in a row" );
   now += 1s;
   EXPECT_EQ( readBay( { firstMissed } ).state, State::Absent );
}

TEST_F( PollsTest, SlotsAreEmptyInOneRoundWhenEverythingIsReadOnce ) {
   supervisor.emplace( cages, Limits{ .once = true }, now );
   for ( int i = 0; i < 9; ++i )
      EXPECT_EQ( readBay( { firstMissed } ).state, State::Unreadable );
   EXPECT_EQ( readBay( { firstMissed } ).state, State::Absent );
   runAll();
   EXPECT_TRUE( supervisor->roundDone() );
}

TEST_F( PollsTest, SlotsAreNotEmptyWhenTheirModulesMissALaterTransfer ) {
   std::vector<std::string> faults( 20, laterMissed );
   faults.insert( faults.end(), 9, firstMissed );
   faults.push_back( laterMissed );
   faults.insert( faults.end(), 9, firstMissed );
   for ( const std::string &fault : faults ) {
      EXPECT_EQ( readBay( { fault } ).state, State::Unreadable );
      now += 1s;
   }
   EXPECT_EQ( readBay( { firstMissed } ).state, State::Absent );
}

TEST_F( PollsTest, SlotsAreUnreadableForAnyOtherFaultOfTheBus ) {
   for ( const char *fault : { "0x70 register 0x9a: no acknowledge of the address",
                               "0x58 register 0x9a: PEC 0x01 where 0x02 is due" } )
      for ( int i = 0; i < 20; ++i, now += 1s ) {
         const Reading reading = readBay( { bus + fault } );
         EXPECT_EQ( reading.state, State::Unreadable );
         EXPECT_EQ( reading.fault.status, 1 );
      }
}

TEST_F( PollsTest, SlotsKeepTheirLastModuleWithItsAgeWhileTheyCanNotBeRead ) {
   const Reading module{ .name = "presence", .value = std::string( "KP-850" ) };
   read( 3, {}, module );
   now += 1s;
   const Reading nothing{ .name = "presence", .state = State::Absent, .fault = { 1, "" } };
   const ValueReport missed = read( 3, { firstMissed }, nothing );
   EXPECT_EQ( missed.reading.state, State::Unreadable );
   EXPECT_EQ( missed.reading.value, module.value );
   EXPECT_EQ( missed.age, 1 );
   now += 4s;
   EXPECT_EQ( read( 3, { laterMissed }, nothing ).age, 5 );
   EXPECT_EQ( read( 3, {}, module ).age, 0 );
}

TEST_F( PollsTest, SlotsSeparateAnUnknownModuleFromAnUnreadableOne ) {
   EXPECT_EQ( readBay( { "Unknown modelName. PSU is unmanaged" } ).state, State::Unmanaged );
   now += 1s;
   EXPECT_EQ( readBay( { "Failed to read PSU info '' ''" } ).state, State::Unreadable );
   now += 1s;
   EXPECT_EQ( readBay( {} ).state, State::Absent );
}

TEST_F( PollsTest, FansGiveTheirDutyInPercentOfTheHighestSpeed ) {
   read( 4, {}, { .name = "speed", .unit = "rpm", .value = int64_t{ 9135 } } );
   const Reading duty = supervisor->report( now )[4].values.at( 1 ).reading;
   EXPECT_EQ( duty.name, "duty" );
   EXPECT_EQ( duty.unit, "%" );
   EXPECT_EQ( duty.value, Scalar( 50.8 ) ); // 50.75
   now += 1s;
   read( 4, {}, { .name = "speed", .state = State::Unreadable, .fault = { 2, "" } } );
   EXPECT_EQ( supervisor->report( now )[4].values.at( 1 ).reading.state, State::Unreadable );
}

} // namespace
} // namespace Host
