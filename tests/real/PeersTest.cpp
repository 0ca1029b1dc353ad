// One temperature and 25 temperatures of the same chips, read in five ways in one run. The chips
// are those of i2c-stub: their bus takes no time, so that the times are those of the software.
#include "Peers.h"
#include "Linux.h"
#include "bench/Measuring.h"
#include "bench/PingPong.h"

#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>

namespace RealTest {

namespace {

constexpr size_t rounds = 21;
constexpr size_t counts[]{ 1, 25 };

struct Row {
   const char *name;
   std::unique_ptr<Peer> peer;
   size_t readings;                                    // in a round, of one temperature
   std::vector<double> seconds[std::size( counts )]{}; // a reading, round by round
};

// Temperatures that no chip had in the round before, nor has another chip.
double temperature( size_t chip, size_t turn ) {
   return 20 + static_cast<double>( ( chip * 13 + turn * 5 ) % 128 ) / 2;
}

template <typename Call>
double secondsEach( size_t calls, Call call ) {
   const double began = secondsOf( CLOCK_MONOTONIC );
   for ( size_t i = 0; i < calls; ++i )
      call();
   return ( secondsOf( CLOCK_MONOTONIC ) - began ) / static_cast<double>( calls );
}

class PeersTest : public ::testing::Test {
 protected:
   PeersTest() {
      loadModule( "i2c-stub", { "chip_addr=0x48,0x49,0x4a,0x4b,0x4c,0x4d,0x4e,0x4f" } );
      thermometers_.adapter = adapterNamed( "SMBus stub" );
      for ( uint8_t address = 0x48; address < 0x50; ++address ) {
         thermometers_.addresses.push_back( address );
         drivers_.push_back(
            std::make_unique<KernelDriver>( thermometers_.adapter, "lm75", address ) );
         thermometers_.inputs.push_back( drivers_.back()->hwmonFile( "temp1_input" ) );
      }
      rows_.push_back( { "i2c-dev held open, libi2c", makeHolder( thermometers_ ), 200 } );
      rows_.push_back( { "i2cget, a process each", makeI2cGet( thermometers_ ), 4 } );
      rows_.push_back( { "temp1_input of the kernel's lm75", makeHwmon( thermometers_ ), 200 } );
      rows_.push_back( { "sensors, a process for all", makeSensors( thermometers_ ), 4 } );
      rows_.push_back( { "plug-in and orbis-smbusd", makePlugin( thermometers_ ), 200 } );
   }

   // All chips are at other temperatures in every turn. So a value that someone kept is seen.
   std::vector<double> turn( size_t count ) {
      ++turn_;
      for ( size_t chip = 0; chip < thermometers_.addresses.size(); ++chip ) {
         const auto word = static_cast<uint16_t>( temperature( chip, turn_ ) * 256 );
         StubChip( thermometers_.adapter, thermometers_.addresses[chip] )
            .wordIs( 0, static_cast<uint16_t>( word >> 8 | word << 8 ) );
      }
      std::vector<double> expected;
      for ( size_t i = 0; i < count; ++i )
         expected.push_back( temperature( thermometers_.chip( i ), turn_ ) );
      return expected;
   }

   // A round of one peer.
   void measure( Row &row, size_t kind ) {
      const size_t count = counts[kind];
      const std::vector<double> expected = turn( count );
      std::vector<double> celsius( count );
      const double call =
         secondsEach( ( row.readings + count - 1 ) / count, [&] { row.peer->read( celsius ); } );
      EXPECT_EQ( celsius, expected ) << row.name;
      row.seconds[kind].push_back( call / static_cast<double>( count ) );
   }

   // Microseconds a reading; and how many ping-pongs of its round ours took more.
   std::string table() const {
      std::string text = fmt::format( "{:34}{:>9}{:>9}{:>12}{:>9}\n", "microseconds a reading",
                                      "of 1", "of 25", "ours later", "of 25" );
      text += fmt::format( "{:34}{:9.1f}{:9.1f}\n", "a bare ping-pong",
                           median( pingPongs_[0] ) * 1e6, median( pingPongs_[1] ) * 1e6 );
      for ( const Row &row : rows_ ) {
         text += fmt::format( "{:34}", row.name );
         for ( const auto &seconds : row.seconds )
            text += fmt::format( "{:9.1f}", median( seconds ) * 1e6 );
         for ( size_t kind = 0; kind < std::size( counts ); ++kind ) {
            std::vector<double> later;
            for ( size_t i = 0; i < rounds; ++i )
               later.push_back( ( rows_.back().seconds[kind][i] - row.seconds[kind][i] ) /
                                pingPongs_[kind][i] );
            text += fmt::format( "{:{}.2f}", median( later ), kind == 0 ? 12 : 9 );
         }
         text += "\n";
      }
      return text + "ours later: by this many ping-pongs a reading; less than nothing is earlier\n";
   }

   PingPong pingPong_{ 23, 7 }; // the bytes of a reading over the socket and of its answer
   Thermometers thermometers_;
   std::vector<std::unique_ptr<KernelDriver>> drivers_;
   std::vector<Row> rows_;
   std::vector<double> pingPongs_[std::size( counts )];
   size_t turn_ = 0;
};

TEST_F( PeersTest, AllReadTheTemperaturesThatTheChipsHaveNow ) {
   for ( Row &row : rows_ ) {
      std::vector<double> celsius( 25 );
      const std::vector<double> expected = turn( celsius.size() );
      row.peer->read( celsius );
      ASSERT_EQ( celsius, expected ) << row.name;
   }
   for ( size_t round = 0; round < rounds; ++round )
      for ( size_t kind = 0; kind < std::size( counts ); ++kind ) {
         pingPongs_[kind].push_back( secondsEach( 200, [&] { pingPong_.exchange(); } ) );
         for ( Row &row : rows_ )
            measure( row, kind );
      }
   std::ofstream( OUT "/peers.txt" ) << table();
}

} // namespace

} // namespace RealTest
