// Serves a board for a long time while random chips fail. The memory of server and host must not
// grow, every fault must be reported with its reason, and the right readings must come back.
//
// ORBIS_SOAK_TRANSFERS is the number of transfers; the default is a few thousand. `orbis-host
// serve` makes about eight hundred per second.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <fstream>
#include <random>
#include <thread>

namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using Words = std::vector<std::string>;

// What a chip's fault does to an object. It may end the plug-in's process by an assertion. If it
// only makes a reading fail, an assertion is still possible when the object is brought up again.
struct Failure {
   Words fault;
   const char *object;
   Words reasons; // one of these, after the state
};

constexpr const char *alertAssertion =
   "Assertion `device_->setThreshold( Threshold::Alert, value ) == PL_STATUS_OK' failed";
constexpr const char *byteAssertion = "Assertion `data.size() == 1' failed";
constexpr const char *wordAssertion = "Assertion `data.size() == 2' failed";
constexpr const char *fruAssertion = "Assertion `type == 3 && \"Expected type code 3";

const Failure failures[] = {
   { { "nack", "temp-front" }, "temp-front", { "0x48 register 0x00", alertAssertion } },
   { { "nack", "temp-cpu", "1/2" }, "temp-cpu", { "0x48 register 0x00", alertAssertion } },
   { { "answer-size", "temp-rear", "1" }, "temp-rear", { wordAssertion } },
   { { "stuck", "temp-cpu" }, "temp-cpu", { "held low by temp-cpu", alertAssertion } },
   { { "slow", "psu1", "400" }, "psu1-slot", { "300 ms is over" } },
   { { "nack", "psu1" }, "psu1", { "from 0x58" } },
   { { "answer-size", "psu2", "3" }, "psu2", { wordAssertion } },
   { { "nack", "psu2-fru" }, "psu2-slot", { "absent: " } },
   { { "stuck", "psu1-fru" }, "psu2-slot", { "held low by psu1-fru" } },
   { { "corrupt", "psu2-fru", "4", "0xff" }, "psu2-slot", { fruAssertion } },
   { { "corrupt", "psu1", "0x9a", "0x01" }, "psu1-slot", { "unmanaged: ", "unreadable: " } },
   { { "nack", "fan-inlets" }, "fan1", { "from 0x2e register" } },
   { { "answer-size", "fan-outlets", "2" }, "fan3", { byteAssertion } },
   { { "nack", "fan-pins" }, "fan2-slot", { "from 0x20 register" } },
   { { "nack", "cpld-qsfp" }, "qsfp1", { "from 0x32 register" } },
   { { "answer-size", "cpld", "0" }, "usb-power", { byteAssertion } },
   { { "nack", "cpld" }, "mgmt-phy-reset", { "from 0x31 register" } },
};

class SoakTest : public ::testing::Test {
 protected:
   static constexpr auto patience = std::chrono::seconds( 40 );

   template <typename Done>
   bool within( std::chrono::seconds limit, Done done ) {
      const auto end = std::chrono::steady_clock::now() + limit;
      while ( !done() ) {
         if ( std::chrono::steady_clock::now() > end )
            return false;
         std::this_thread::sleep_for( std::chrono::milliseconds( 50 ) );
      }
      return true;
   }
   // In KiB.
   static long residentMemory( pid_t process ) {
      std::ifstream status( fmt::format( "/proc/{}/status", process ) );
      for ( std::string word; status >> word; )
         if ( word == "VmRSS:" ) {
            long size = 0;
            status >> size;
            return size;
         }
      ADD_FAILURE() << "process " << process << " is gone";
      return 0;
   }
   size_t countAssertions() const {
      const std::string output = board.served();
      size_t count = 0;
      for ( size_t at = 0; ( at = output.find( "Assertion `", at ) ) != output.npos; ++at )
         ++count;
      return count;
   }
   bool isRight( const Shown &shown ) const {
      return shown.exitCode == 0 && shown.texts == right.texts && shown.absent == right.absent &&
             readings( shown ) == readings( right );
   }
   // The readings that do not change: no fans.
   static std::map<std::string, double> readings( const Shown &shown ) {
      std::map<std::string, double> steady;
      for ( const auto &[name, value] : shown.values )
         if ( name.find( "fan" ) == name.npos )
            steady.emplace( name, value );
      return steady;
   }
   void failAndRecover( const Failure &failure ) {
      Words words = { "sim" };
      words.insert( words.end(), failure.fault.begin(), failure.fault.end() );
      ASSERT_THAT( board.smbus( words ), testing::StartsWith( "done: " ) );
      std::string reported;
      const bool isReported = within( patience, [&] {
         const Shown shown = board.show();
         const auto found = shown.faults.find( failure.object );
         reported = found == shown.faults.end() ? "" : found->second;
         return std::any_of(
            failure.reasons.begin(), failure.reasons.end(),
            [&]( const auto &each ) { return reported.find( each ) != reported.npos; } );
      } );
      EXPECT_TRUE( isReported ) << fmt::format( "{}", fmt::join( words, " " ) )
                                << " is reported as " << reported;
      ASSERT_THAT( board.smbus( { "sim", "clear", failure.fault[1] } ),
                   testing::StartsWith( "done: " ) );
      Shown last;
      EXPECT_TRUE( within( patience, [&] { return isRight( last = board.show() ); } ) )
         << "after " << fmt::format( "{}", fmt::join( words, " " ) ) << " "
         << ( last.faults.empty() ? "" : last.faults.begin()->second );
   }

   RunningBoard board{ "kelt", { "--transaction-limit", "300" } };
   Shown right;
};

TEST_F( SoakTest, KeepsItsMemoryAndReportsEveryFault ) {
   const char *asked = std::getenv( "ORBIS_SOAK_TRANSFERS" );
   const uint64_t transfers = asked ? std::strtoull( asked, nullptr, 10 ) : 4000;
   right = board.show();
   ASSERT_EQ( right.exitCode, 0 );
   auto serve = board.serve( { "--period", "0.1" } );
   const size_t before = countAssertions();

   std::mt19937 random( 20 ); // NOLINT: the same run each time
   long server = 0, parent = 0;
   unsigned rounds = 0;
   for ( uint64_t passed = 0; ( passed = board.transfers() ) < transfers; ++rounds ) {
      if ( passed > transfers / 4 && server == 0 ) { // now every buffer has its final size
         server = residentMemory( board.server().pid() );
         parent = residentMemory( serve->pid() );
      }
      ASSERT_NO_FATAL_FAILURE( failAndRecover( failures[std::uniform_int_distribution<size_t>(
         0, std::size( failures ) - 1 )( random )] ) );
   }
   const long serverEnd = residentMemory( board.server().pid() );
   const long parentEnd = residentMemory( serve->pid() );
   fmt::print( "{} transfers, {} faults, {} assertions; server {} to {} KiB, host {} to {} KiB\n",
               board.transfers(), rounds, countAssertions() - before, server, serverEnd, parent,
               parentEnd );
#ifndef ORBIS_SANITIZED // sanitizers keep freed memory
   EXPECT_LT( serverEnd, server + 1024 );
   EXPECT_LT( parentEnd, parent + 1024 );
#endif
   serve->signal( SIGTERM );
   EXPECT_EQ( serve->wait(), 0 );
   EXPECT_EQ( board.stopServer(), 0 );
}

} // namespace
