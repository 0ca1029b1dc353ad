#include "host/serve/LiveBusses.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// A bus that was used for so many milliseconds until then.
SmbusControl::Response after( double seconds, uint64_t milliseconds ) {
   SmbusControl::Response response;
   response.set_seconds( seconds );
   SmbusControl::BusLoad *bus = response.add_bus();
   bus->set_bus( "scd(4):1:2" );
   bus->set_wires( true );
   bus->set_clock( 400000 );
   bus->mutable_totals()->set_wire_ns( milliseconds * 1'000'000 );
   return response;
}

TEST( LiveBussesTest, TellsOfEachBusItsSegmentsItsFailingChipsAndItsClients ) {
   SmbusControl::Response response = after( 10, 310 );
   SmbusControl::BusLoad *bus = response.mutable_bus( 0 );
   bus->mutable_totals()->set_failures( 35 );
   bus->set_held( "0x70=1" );
   bus->add_quarantined()->set_path( "0x70=2" );
   SmbusControl::Segment *segment = bus->add_segment();
   segment->set_path( "0x70=1" );
   segment->mutable_totals()->set_wire_ns( 100'400'000 );
   segment->mutable_totals()->set_failures( 2 );
   segment->add_chip()->set_address( 0x49 );
   SmbusControl::ChipLoad *chip = segment->add_chip();
   chip->set_address( 0x48 );
   chip->set_failures_in_a_row( 3 );
   chip->set_last_failure( SmbusControl::ChipLoad::HELD_LOW );
   SmbusControl::Client *client = bus->add_client();
   client->set_program( "orbis-host" );
   client->set_process( 7 );
   client->mutable_totals()->set_wire_ns( 200'000'000 );
   LiveBusses busses;
   busses.told( response );
   EXPECT_THAT(
      busses.json(),
      ElementsAre(
         R"({"bus":"scd(4):1:2","clock":400000,"load":0.031,"failures":35,)"
         R"("held":"0x70=1","quarantined":["0x70=2"],"segments":[{"path":"0x70=1","load":0.01,"failures":2,)"
         R"("failing":[{"address":72,"inARow":3,"last":"held-low"}]}],)"
         R"("clients":[{"program":"orbis-host","process":7,"load":0.02}]})" ) );
}

TEST( LiveBussesTest, ALoadIsThatSinceTheLastAnswerButOne ) {
   LiveBusses busses;
   const auto load = [&]( double seconds, uint64_t milliseconds ) {
      busses.told( after( seconds, milliseconds ) );
      const std::string &json = busses.json().at( 0 );
      const size_t at = json.find( "\"load\":" ) + 7;
      return json.substr( at, json.find( ',', at ) - at );
   };
   EXPECT_EQ( load( 100, 1000 ), "0.01" ); // since the server's start
   EXPECT_EQ( load( 102, 1200 ), "0.1" );
   EXPECT_EQ( load( 104, 1800 ), "0.2" ); // 800 ms of 4 s
   EXPECT_EQ( load( 106, 1800 ), "0.15" );
   EXPECT_EQ( load( 3, 300 ), "0.1" ); // another server
   EXPECT_EQ( load( 5, 300 ), "0.0" );
}

TEST( LiveBussesTest, PortsWithoutWiresHaveTheTimeThatTheirTransfersTook ) {
   SmbusControl::Response response = after( 10, 0 );
   response.mutable_bus( 0 )->set_wires( false );
   response.mutable_bus( 0 )->mutable_totals()->set_busy_ns( 500'000'000 );
   LiveBusses busses;
   busses.told( response );
   EXPECT_THAT( busses.json(), ElementsAre( HasSubstr( R"({"bus":"scd(4):1:2","load":0.05,)" ) ) );
}

} // namespace
} // namespace Host
