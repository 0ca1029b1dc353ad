// What reading a module puts on the bus.
#include "host/plugin/ModuleReader.h"

#include "support/FakeMemory.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using Optics::Region;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class ModuleReaderTest : public ::testing::Test {
 protected:
   static constexpr uint8_t qsfp28 = 0x11, qsfpDd = 0x18, sfp = 0x03;
   static constexpr uint8_t flatQsfp = 0x04, flatCmis = 0x80; // byte 2

   // Reads once. Returns the transfers.
   std::vector<std::string> read( bool fresh = false ) {
      device_.transfers.clear();
      second_.transfers.clear();
      pauses_.clear();
      memory_ = {};
      reader_.read(
         fresh,
         { .begun = []( auto ) {}, .done = [this]( const Reading &one ) { reading_ = one; } },
         [this]( const Event &event ) { memory_ = std::get<ModuleMemory>( event ); } );
      return device_.transfers;
   }
   std::optional<uint8_t> byte( const Region &region, unsigned number ) const {
      return memory_.image.byte( region, number );
   }
   static bool isOfPage( const std::string &transfer ) {
      return transfer.find( " 12" ) != std::string::npos &&
             transfer.find( "128" ) == std::string::npos;
   }

   FakeMemory device_, second_;
   std::vector<std::chrono::milliseconds> pauses_;
   ModuleReader reader_{ device_.proxy(), second_.proxy(),
                         [this]( auto time ) { pauses_.push_back( time ); } };
   Reading reading_;
   ModuleMemory memory_;
};

// Page 00h shows what a QSFP is; its thresholds are on page 03h.
TEST_F( ModuleReaderTest, ReadsTheIdentityOnceAndThenMonitorsAlone ) {
   device_.lower = { { 0, qsfp28 }, { 22, 25 } };
   device_.pages[0] = { { 128, qsfp28 }, { 148, 'O' } };
   device_.pages[3] = { { 128, 75 } };
   EXPECT_THAT( read(), Contains( StartsWith( "read 128+" ) ) );
   EXPECT_EQ( reading_.state, State::Ok ) << reading_.fault.words;
   EXPECT_TRUE( memory_.begins );
   EXPECT_EQ( byte( { 0x50, true, 0, 0 }, 148 ), 'O' );
   EXPECT_EQ( byte( { 0x50, true, 0, 3 }, 128 ), 75 );
   EXPECT_EQ( byte( {}, 22 ), 25 );

   device_.lower[22] = 26;
   EXPECT_THAT( read(), Not( Contains( HasSubstr( "128" ) ) ) );
   EXPECT_FALSE( memory_.begins );
   EXPECT_EQ( byte( {}, 22 ), 26 );
   EXPECT_EQ( byte( { 0x50, true, 0, 0 }, 148 ), std::nullopt );
   EXPECT_THAT( device_.transfers, Not( Contains( StartsWith( "write" ) ) ) );
}

TEST_F( ModuleReaderTest, PutsBackThePageThatItFound ) {
   device_.lower = { { 0, qsfp28 } };
   device_.page = 2;
   std::vector<std::string> pages;
   for ( const std::string &transfer : read() )
      if ( isOfPage( transfer ) )
         pages.push_back( transfer );
   EXPECT_THAT( pages, ElementsAre( "read 127+1", "write 127 00", "read 127+1", "write 127 03",
                                    "read 127+1", "write 127 02" ) );
   EXPECT_EQ( device_.page, 2 );
}

// Bank and page are chosen together, where the page has banks.
TEST_F( ModuleReaderTest, ChoosesBankAndPageOfACmisModuleForItsLanes ) {
   device_.lower = { { 0, qsfpDd } };
   read();
   ASSERT_EQ( reading_.state, State::Ok ) << reading_.fault.words;
   device_.page = 1;
   device_.bank = 2;
   const auto transfers = read();
   EXPECT_THAT( transfers, Contains( "write 126 00 11" ) );
   EXPECT_EQ( transfers.back(), "write 126 02 01" );
   EXPECT_EQ( device_.page, 1 );
   EXPECT_EQ( device_.bank, 2 );
}

TEST_F( ModuleReaderTest, AFlatMemoryIsNeverSwitched ) {
   for ( const auto &[identifier, flat] :
         { std::pair( qsfp28, flatQsfp ), std::pair( qsfpDd, flatCmis ) } ) {
      device_.lower = { { 0, identifier }, { 2, flat } };
      const auto transfers = read( true );
      EXPECT_EQ( reading_.state, State::Ok );
      EXPECT_THAT( transfers, Contains( StartsWith( "read 128+" ) ) );
      EXPECT_THAT( transfers, Not( Contains( ::testing::AnyOf( StartsWith( "write" ), "read 127+1",
                                                               "read 126+2" ) ) ) );
   }
}

TEST_F( ModuleReaderTest, WhatAnotherProgramsPageGaveIsThrownAwayAndReadAgain ) {
   device_.lower = { { 0, qsfp28 } };
   device_.pages[0] = { { 148, 'O' } };
   device_.pages[2] = { { 148, 'X' } };
   bool isFirst = true;
   device_.before = [&]( const std::string &transfer ) {
      if ( transfer.starts_with( "read 128+" ) && std::exchange( isFirst, false ) )
         device_.page = 2; // between our choice and our read
   };
   read();
   EXPECT_FALSE( isFirst );
   EXPECT_EQ( reading_.state, State::Ok );
   EXPECT_EQ( byte( { 0x50, true, 0, 0 }, 148 ), 'O' );
}

TEST_F( ModuleReaderTest, AModuleThatNeverShowsThePageIsToldAndHasNoBytesOfIt ) {
   device_.lower = { { 0, qsfp28 } };
   device_.before = [this]( const std::string & ) { device_.page = 2; };
   read();
   EXPECT_EQ( reading_.state, State::Unreadable );
   EXPECT_EQ( reading_.fault.words, "page 00h was chosen, and the module shows page 02h" );
   EXPECT_EQ( byte( { 0x50, true, 0, 0 }, 128 ), std::nullopt );
}

TEST_F( ModuleReaderTest, ABusyModuleIsAskedAgain ) {
   device_.lower = { { 0, qsfp28 }, { 2, flatQsfp } };
   device_.misses = 3;
   const auto transfers = read();
   EXPECT_EQ( reading_.state, State::Ok );
   EXPECT_THAT( pauses_, ElementsAre( 0ms, 10ms, 80ms ) );
   EXPECT_EQ( transfers[2], "read 0+3 missed" );
   EXPECT_EQ( transfers[3], "read 0+3" );
}

TEST_F( ModuleReaderTest, AModuleThatDoesNotAnswerIsUnreadable ) {
   device_.misses = 1000;
   EXPECT_THAT( read(), Each( "read 0+3 missed" ) );
   EXPECT_EQ( reading_.state, State::Unreadable );
   EXPECT_EQ( reading_.fault.status, PL_STATUS_TRANSACTION );
   EXPECT_EQ( reading_.fault.words, "address 0x50, bytes 0 to 2: no answer" );
   EXPECT_THAT( memory_.image.regions(), IsEmpty() );
}

// Flags are cleared by reading them.
TEST_F( ModuleReaderTest, WhatWasReadBeforeAFailureIsPassed ) {
   device_.lower = { { 0, qsfpDd }, { 9, 0x01 } };
   read();
   device_.before = [this]( const std::string &transfer ) {
      if ( transfer.starts_with( "read 126" ) )
         device_.misses = 1000;
   };
   read();
   EXPECT_EQ( reading_.state, State::Unreadable );
   EXPECT_EQ( byte( {}, 9 ), 0x01 );
   EXPECT_EQ( byte( { 0x50, true, 0, 0x11 }, 154 ), std::nullopt );
}

TEST_F( ModuleReaderTest, AnSfpsMonitorsComeFromItsSecondAddress ) {
   device_.lower = { { 0, sfp }, { 92, 0x68 } };
   second_.lower = { { 96, 30 } };
   read();
   ASSERT_EQ( reading_.state, State::Ok );
   EXPECT_EQ( byte( { 0x51, false }, 96 ), 30 );
   EXPECT_THAT( second_.transfers, Not( IsEmpty() ) );
   read();
   EXPECT_THAT( device_.transfers, IsEmpty() );
   EXPECT_THAT( second_.transfers, ElementsAre( StartsWith( "read 9" ) ) );
}

TEST_F( ModuleReaderTest, WithoutDiagnosticsAnSfpsSecondAddressIsNotAsked ) {
   device_.lower = { { 0, sfp } };
   read();
   EXPECT_EQ( reading_.state, State::Ok );
   EXPECT_THAT( second_.transfers, IsEmpty() );
}

// Its identity is of use all the same.
TEST_F( ModuleReaderTest, ABoardWithoutADeviceForTheSecondAddressReadsTheFirst ) {
   device_.lower = { { 0, sfp }, { 20, 'O' }, { 92, 0x68 } };
   ModuleReader reader( device_.proxy(), nullptr, []( auto ) {} );
   reader.read(
      false, { .begun = []( auto ) {}, .done = [this]( const Reading &one ) { reading_ = one; } },
      [this]( const Event &event ) { memory_ = std::get<ModuleMemory>( event ); } );
   EXPECT_EQ( reading_.state, State::Ok );
   EXPECT_EQ( byte( {}, 20 ), 'O' );
}

// It says that it has pages, and shows page 00h for each.
TEST_F( ModuleReaderTest, AModuleWithoutItsThresholdsStillHasMonitors ) {
   device_.lower = { { 0, qsfp28 }, { 22, 25 } };
   device_.before = [this]( const std::string & ) { device_.page = 0; };
   read();
   EXPECT_EQ( reading_.state, State::Ok ) << reading_.fault.words;
   EXPECT_EQ( byte( {}, 22 ), 25 );
   EXPECT_EQ( byte( { 0x50, true, 0, 3 }, 128 ), std::nullopt );
}

// The module may have taken the choice that it didn't acknowledge.
TEST_F( ModuleReaderTest, PutsItsPageBackAlsoWhenAChoiceWasNotAcknowledged ) {
   device_.lower = { { 0, qsfpDd } };
   read();
   device_.before = [this]( const std::string &transfer ) {
      if ( transfer.starts_with( "write 12" ) && device_.misses == 0 )
         device_.misses = 4;
   };
   const auto transfers = read();
   EXPECT_EQ( reading_.state, State::Unreadable );
   EXPECT_EQ( transfers.back(), "write 126 00 00 missed" );
}

// Some controllers take 32 bytes at most, as SMBus has it.
TEST_F( ModuleReaderTest, WhereLongBlocksFailItReadsShortOnesFromThenOn ) {
   device_.lower = { { 0, qsfp28 }, { 2, flatQsfp } };
   device_.longest = 32;
   read();
   EXPECT_EQ( reading_.state, State::Ok );
   const auto isLong = []( const std::string &transfer ) {
      return std::stoul( transfer.substr( transfer.find( '+' ) + 1 ) ) > 32;
   };
   EXPECT_THAT( read(), ElementsAre( "read 2+32", "read 34+24", "read 86+8" ) );
   EXPECT_EQ( reading_.state, State::Ok );
   // Another module may be on another way.
   const auto again = read( true );
   EXPECT_GT( std::count_if( again.begin(), again.end(), isLong ), 0 );
}

TEST_F( ModuleReaderTest, OneBusyTimeDoesNotMakeBlocksShort ) {
   device_.lower = { { 0, qsfp28 }, { 1, 8 } };
   device_.pages[0] = { { 220, 0x3C } };
   read();
   device_.misses = 4;
   read();
   EXPECT_EQ( reading_.state, State::Ok );
   EXPECT_THAT( read(), Contains( "read 2+56" ) );
}

TEST_F( ModuleReaderTest, AModuleThatWasPluggedSinceIsReadFromTheBeginning ) {
   device_.lower = { { 0, qsfp28 }, { 2, flatQsfp } };
   device_.pages[0] = { { 148, 'A' } };
   read();
   device_.pages[0] = { { 148, 'B' } };
   read();
   EXPECT_FALSE( memory_.begins );
   read( true );
   EXPECT_TRUE( memory_.begins );
   EXPECT_EQ( byte( { 0x50, true, 0, 0 }, 148 ), 'B' );
}

} // namespace
} // namespace Host
