#include "smbusd/lease/Lease.h"
#include "ManualClock.h"
#include "smbus/Decode.h"
#include "smbus/Requests.h"
#include "smbusd/lease/CarryOut.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using namespace Smbusd;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

SmbusControl::SafeWrite write( uint32_t number, uint32_t value ) {
   SmbusControl::SafeWrite made;
   made.set_bus( "scd(4):1:5" );
   made.set_address( 0x2E );
   made.set_register_( number );
   made.set_value( value );
   return made;
}

SmbusControl::Lease leaseOf( std::chrono::milliseconds time,
                             const std::vector<SmbusControl::SafeWrite> &writes ) {
   SmbusControl::Lease lease;
   lease.set_milliseconds( static_cast<uint32_t>( time.count() ) );
   for ( const SmbusControl::SafeWrite &one : writes )
      *lease.add_write() = one;
   return lease;
}

class LeaseTest : public ::testing::Test {
 protected:
   SmbusControl::LeaseState take( std::chrono::milliseconds time ) {
      return lease.take( leaseOf( time, { write( 0x30, 0xFF ), write( 0x40, 0xFE ) } ), host );
   }
   const Peer host{ -1, 1000, 100 };
   ManualClock clock;
   std::vector<std::string> log;
   std::map<unsigned, std::string> errors; // by register
   Lease lease{ clock, [this]( const SafeWrite &one ) {
                  log.push_back( toText( one ) );
                  return errors[one.number];
               } };
   const std::string first = "0xff to register 0x30 of 0x2e on scd(4):1:5",
                     second = "0xfe to register 0x40 of 0x2e on scd(4):1:5";
};

TEST_F( LeaseTest, NothingIsWrittenAsLongAsItIsRenewed ) {
   for ( int i = 0; i < 1000; ++i ) {
      EXPECT_FALSE( take( 15s ).ran() );
      clock.advance( 14'999ms );
      lease.work();
   }
   EXPECT_THAT( log, IsEmpty() );
}

TEST_F( LeaseTest, AllIsWrittenOnceWhenItIsOver ) {
   take( 15s );
   EXPECT_EQ( lease.work(), clock.now() + 15s );
   clock.advance( 15s );
   EXPECT_FALSE( lease.work() );
   EXPECT_THAT( log, ElementsAre( first, second ) );
   clock.advance( 1h );
   lease.work();
   EXPECT_EQ( log.size(), 2u );
}

TEST_F( LeaseTest, WhatIsNotAcknowledgedIsWrittenAgainOnceASecond ) {
   errors[0x30] = "no acknowledge";
   take( 1s );
   clock.advance( 1s );
   EXPECT_EQ( lease.work(), clock.now() + 1s );
   EXPECT_THAT( log, ElementsAre( first, second ) );
   EXPECT_EQ( lease.state().done(), 1u );
   EXPECT_EQ( lease.state().error(), "" ); // the last one was acknowledged
   clock.advance( 500ms );
   lease.work();
   EXPECT_EQ( log.size(), 2u );
   clock.advance( 500ms );
   lease.work();
   EXPECT_THAT( log, ElementsAre( first, second, first ) );
   EXPECT_EQ( lease.state().error(), "no acknowledge" );
   errors.clear();
   clock.advance( 1s );
   EXPECT_FALSE( lease.work() );
   EXPECT_EQ( lease.state().done(), 2u );
}

TEST_F( LeaseTest, ARenewalEndsItAndIsToldOnce ) {
   errors[0x30] = "no acknowledge";
   take( 1s );
   clock.advance( 1s );
   lease.work();
   EXPECT_TRUE( lease.state().ran() );
   EXPECT_TRUE( take( 1s ).ran() );
   EXPECT_FALSE( take( 1s ).ran() );
   EXPECT_EQ( lease.state().done(), 0u );
   log.clear();
   clock.advance( 999ms );
   lease.work();
   EXPECT_THAT( log, IsEmpty() );
   clock.advance( 1ms );
   lease.work();
   EXPECT_EQ( log.size(), 2u );
}

TEST_F( LeaseTest, TheLastOneWhoTookItCounts ) {
   take( 15s );
   lease.take( leaseOf( 5s, { write( 0x50, 1 ) } ), { -1, 1000, 101 } );
   EXPECT_EQ( lease.state().process(), 101u );
   EXPECT_EQ( lease.state().seconds(), 5 );
   clock.advance( 15s );
   lease.work();
   EXPECT_THAT( log, ElementsAre( "0x01 to register 0x50 of 0x2e on scd(4):1:5" ) );
}

TEST_F( LeaseTest, AWrongOneIsRefusedAndTheOneBeforeStays ) {
   take( 15s );
   const auto refusal = [this]( const SmbusControl::Lease &wrong ) -> std::string {
      try {
         lease.take( wrong, host );
      } catch ( const LeaseError &error ) {
         return error.what();
      }
      return "taken";
   };
   EXPECT_EQ( refusal( leaseOf( 0s, {} ) ), "a lease of 0 ms is not within 1 ms and 3600 s" );
   EXPECT_EQ( refusal( leaseOf( 3601s, {} ) ),
              "a lease of 3601000 ms is not within 1 ms and 3600 s" );
   SmbusControl::SafeWrite wrong = write( 0x30, 0x100 );
   EXPECT_EQ( refusal( leaseOf( 1s, { write( 1, 1 ), wrong } ) ),
              "write 2 of 2: the value 256 is above 255" );
   wrong = write( 0x30, 1 );
   wrong.set_bus( "nowhere" );
   EXPECT_EQ( refusal( leaseOf( 1s, { wrong } ) ), "write 1 of 1: \"nowhere\" is not a bus" );
   wrong = write( 0x30, 1 );
   wrong.set_path( "0x70" );
   EXPECT_EQ( refusal( leaseOf( 1s, { wrong } ) ), "write 1 of 1: \"0x70\" is not a path" );
   EXPECT_EQ( refusal( leaseOf( 1s, std::vector( 257, write( 1, 1 ) ) ) ),
              "257 writes are more than 256" );
   EXPECT_EQ( lease.state().writes(), 2u );
   EXPECT_EQ( lease.state().process(), 100u );
}

TEST_F( LeaseTest, WithoutOneNothingIsHeld ) {
   EXPECT_FALSE( lease.state().held() );
   EXPECT_FALSE( lease.work() );
}

// A register of the bus.
class RegisterBus final : public Bus::RootBus {
 public:
   RegisterBus( uint8_t &held, std::vector<std::string> &log ) : held_( held ), log_( log ) {}
   Bus::Outcome transfer( const Bus::Transfer &transfer ) override {
      log_.push_back( describe( transfer ) );
      if ( after && log_.size() == 1 )
         after();
      if ( fails )
         return { .error = "it broke" };
      if ( transfer.isSendByte() )
         return {};
      if ( transfer.kind == Bus::Transfer::Kind::Read )
         return { .data = std::string( 1, static_cast<char>( held_ ) ) };
      held_ = static_cast<uint8_t>( transfer.data.at( 0 ) );
      return {};
   }
   std::function<void()> after; // the first transfer
   bool fails = false;

 private:
   uint8_t &held_;
   std::vector<std::string> &log_;
};

class SafeWriteTest : public ::testing::Test {
 protected:
   SafeWriteTest() {
      Bus::Busses busses;
      auto made = std::make_unique<RegisterBus>( held, log );
      bus = made.get();
      busses.emplace( id, std::move( made ) );
      dispatcher.emplace( std::move( busses ), clock, 2s );
   }
   const Bus::RootBusId id = *Bus::parseRootBusId( "scd(4):1:5" );
   const Bus::RealClock clock;
   uint8_t held = 0b1010'0001;
   std::vector<std::string> log;
   RegisterBus *bus = nullptr;
   std::optional<Dispatcher> dispatcher;
};

TEST_F( SafeWriteTest, IsOneTransferWithoutAMask ) {
   EXPECT_EQ( carryOut( *dispatcher, { id, {}, 0x2E, 0x30, 0xFF, {} } ), "" );
   EXPECT_THAT( log, ElementsAre( "write of 1 byte to 0x2e register 0x30" ) );
   EXPECT_EQ( held, 0xFF );
}

TEST_F( SafeWriteTest, ChangesOnlyTheBitsOfItsMask ) {
   EXPECT_EQ( carryOut( *dispatcher, { id, {}, 0x20, 8, 0b0000'0110, 0b0000'1111 } ), "" );
   EXPECT_THAT( log, ElementsAre( "read of 1 byte from 0x20 register 0x08",
                                  "write of 1 byte to 0x20 register 0x08" ) );
   EXPECT_EQ( held, 0b1010'0110 );
}

TEST_F( SafeWriteTest, GoesThroughMultiplexersAndReleasesThem ) {
   EXPECT_EQ( carryOut( *dispatcher, { id, { { 0x70, 1 }, { 0x71, 4 } }, 0x20, 8, 1, {} } ), "" );
   EXPECT_THAT( log, ElementsAre( "send byte 0x01 to 0x70", "send byte 0x04 to 0x71",
                                  "write of 1 byte to 0x20 register 0x08", "send byte 0x00 to 0x71",
                                  "send byte 0x00 to 0x70" ) );
}

// Another client that wants the bus meanwhile gets it behind the writing.
TEST_F( SafeWriteTest, NothingPassesBetweenReadingAndWriting ) {
   std::thread other;
   bus->after = [&] {
      other = std::thread( [this] {
         Dispatcher::Exchange exchange;
         Bus::addRequest( exchange.request, id, 0x20, Smbus::REQUEST_WRITE, 8, 1 )
            .set_data( "\x7F" );
         dispatcher->carryOut( exchange, { -1, 1000, 100 } );
      } );
      while ( dispatcher->waiting( id ) == 0 )
         std::this_thread::yield();
   };
   EXPECT_EQ( carryOut( *dispatcher, { id, {}, 0x20, 8, 0b0000'0110, 0b0000'1111 } ), "" );
   other.join();
   EXPECT_EQ( log.size(), 3u );
   EXPECT_EQ( held, 0x7F );
}

TEST_F( SafeWriteTest, TellsWhyItFailed ) {
   bus->fails = true;
   EXPECT_THAT( carryOut( *dispatcher, { id, {}, 0x20, 8, 1, 1 } ), HasSubstr( ": it broke" ) );
   EXPECT_EQ( log.size(), 1u ); // nothing is written that was not read
}

} // namespace

} // namespace SmbusdTest
