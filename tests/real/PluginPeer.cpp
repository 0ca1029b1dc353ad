// The plug-in, the client library and the server as a peer of the programs of Peers.cpp.
#include "Peers.h"
#include "Plugin.h"
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <fmt/format.h>
#include <gtest/gtest.h>

namespace RealTest {

namespace {

constexpr size_t objects = 25;

class PluginPeer final : public Peer {
 public:
   explicit PluginPeer( const Thermometers &thermometers )
      : Peer( thermometers ), server_( { ORBIS_SMBUSD, "--socket", folder_.file( "smbus.sock" ),
                                         "--routes", folder_.write( "routes.json", routes() ) } ) {
      EXPECT_TRUE( server_.waitForError( "serving" ) ) << server_.errors();
      setenv( "ORBIS_SMBUS_SOCKET", folder_.file( "smbus.sock" ).c_str(), 1 );
      topology_ = topology();
      EXPECT_EQ(
         plugin<decltype( pl_temp_sensor_init )>( "pl_temp_sensor_init" )( topology_.c_str() ), 0 );
      for ( size_t i = 0; i < objects; ++i ) {
         const std::string &document = documents_.emplace_back( fmt::format(
            R"({{ "did": {}, "driver": "LM75", "address": {{ "address": {} }}, "driverArgs": {{}} }})",
            i + 1, address( i ) ) );
         sensors_.push_back( plugin<decltype( pl_temp_sensor_add )>( "pl_temp_sensor_add" )(
            document.c_str(), 60, 70 ) );
         EXPECT_TRUE( sensors_.back() );
      }
   }
   ~PluginPeer() override {
      server_.signal( SIGTERM );
      EXPECT_EQ( server_.wait(), 0 ) << server_.errors();
   }

   void read( std::span<double> celsius ) override {
      for ( size_t i = 0; i < celsius.size(); ++i ) {
         float degrees = NAN;
         sensors_[i]->ops->get_temperature( sensors_[i], &degrees );
         celsius[i] = degrees;
      }
   }

 private:
   unsigned address( size_t reading ) const {
      return thermometers_.addresses[thermometers_.chip( reading )];
   }
   std::string routes() const {
      std::string chips;
      for ( const unsigned each : thermometers_.addresses )
         chips += fmt::format( R"({}{{ "address": {}, "force": true }})", chips.empty() ? "" : ", ",
                               each );
      return fmt::format(
         R"({{ "routes": [ {{ "bus": "i2c:0", "adapter": {{ "number": {} }}, "chips": [ {} ] }} ] }})",
         thermometers_.adapter, chips );
   }
   std::string topology() const {
      std::string devices;
      for ( size_t i = 0; i < objects; ++i )
         devices += fmt::format( R"({}{{ "did": {}, "address": {{ "address": {} }} }})",
                                 i == 0 ? "" : ", ", i + 1, address( i ) );
      return fmt::format(
         R"([ {{ "type": "I2C", "ham": "OrbisSmbus", "bus": {{ "id": 0, "devices": [ {} ] }} }} ])",
         devices );
   }

   TestSupport::PrivateFolder folder_;
   TestSupport::StartedProgram server_;
   // The plug-in keeps pointers to the texts.
   std::string topology_;
   std::deque<std::string> documents_;
   std::vector<pl_temp_sensor *> sensors_;
};

} // namespace

std::unique_ptr<Peer> makePlugin( const Thermometers &thermometers ) {
   return std::make_unique<PluginPeer>( thermometers );
}

} // namespace RealTest
