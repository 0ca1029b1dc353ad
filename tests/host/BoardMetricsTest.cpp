#include "host/serve/BoardMetrics.h"

#include "host/serve/BoardFamilies.h"
#include "smbus/Control.pb.h"

#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <regex>

namespace Host {
namespace {

using Health::Level;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr Health::WallTime oneSecond( std::chrono::seconds( 1 ) );

class BoardMetricsTest : public ::testing::Test {
 protected:
   // An object of the board with its report.
   ObjectReport &add( BoardFiles::Kind kind, const std::string &name ) {
      board_.objects.push_back( { .kind = kind, .name = name } );
      figures_.report.push_back( { .name = name,
                                   .type = std::string( BoardFiles::nameOf( kind ) ),
                                   .age = 0.5,
                                   .health = Health::ObjectHealth() } );
      return figures_.report.back();
   }
   static ValueReport value( const std::string &name, const std::string &unit,
                             const Scalar &scalar ) {
      return { { .name = name, .unit = unit, .value = scalar }, 0.5 };
   }
   std::string text( Metrics::Format format = Metrics::Format::Text ) const {
      return boardMetrics( figures_, format );
   }
   // The samples of a family, without its name.
   std::vector<std::string> of( const std::string &family ) const {
      std::vector<std::string> samples;
      const std::string all = text();
      for ( size_t at = 0, end = 0; at < all.size(); at = end + 1 ) {
         end = all.find( '\n', at );
         const std::string line = all.substr( at, end - at );
         if ( line.starts_with( family ) && line.find_first_of( "{ " ) == family.size() )
            samples.push_back( line.substr( family.size() ) );
      }
      return samples;
   }

   BoardFiles::Board board_;
   BoardFigures figures_{ .board = board_ };
};

TEST_F( BoardMetricsTest, ANumberHasTheFamilyOfItsUnitInBaseUnits ) {
   add( BoardFiles::Kind::Psu, "psu1" ).values = { value( "output_voltage", "V", 11.96 ),
                                                   value( "power_ok", "", int64_t{ 1 } ) };
   add( BoardFiles::Kind::Fan, "fan1" ).values = { value( "speed", "rpm", int64_t{ 12047 } ),
                                                   value( "duty", "%", 50.2 ) };
   EXPECT_THAT( of( "orbis_voltage_volts" ),
                ElementsAre( R"({object="psu1",value="output_voltage"} 11.96)" ) );
   EXPECT_THAT( of( "orbis_speed_rpm" ), ElementsAre( R"({object="fan1",value="speed"} 12047)" ) );
   EXPECT_THAT( of( "orbis_drive_ratio" ), ElementsAre( R"({object="fan1",value="duty"} 0.502)" ) );
   EXPECT_THAT( of( "orbis_signal" ), ElementsAre( R"({object="psu1",value="power_ok"} 1)" ) );
   EXPECT_THAT(
      of( "orbis_object_age_seconds" ),
      ElementsAre( R"({object="psu1",type="psu"} 0.5)", R"({object="fan1",type="fan"} 0.5)" ) );
}

TEST_F( BoardMetricsTest, TheLaneOfAModuleIsALabelOfItsOwn ) {
   add( BoardFiles::Kind::Module, "qsfp1-module" ).values = { value( "rx_power_1", "mW", 0.7707 ),
                                                              value( "tx_bias_12", "mA", 7.352 ),
                                                              value( "temperature", "°C", 44.5 ) };
   EXPECT_THAT( of( "orbis_light_power_watts" ),
                ElementsAre( R"({object="qsfp1-module",value="rx_power",lane="1"} 0.0007707)" ) );
   EXPECT_THAT( of( "orbis_laser_current_amperes" ),
                ElementsAre( R"({object="qsfp1-module",value="tx_bias",lane="12"} 0.007352)" ) );
   EXPECT_THAT( of( "orbis_temperature_celsius" ),
                ElementsAre( R"({object="qsfp1-module",value="temperature"} 44.5)" ) );
}

TEST_F( BoardMetricsTest, AValueThatIsNotKnownIsMissingAndItsStateAndAgeSayWhy ) {
   ObjectReport &supply = add( BoardFiles::Kind::Psu, "psu1" );
   supply.values = { value( "input_power", "W", std::monostate() ),
                     value( "output_power", "W", 280.0 ), value( "input_voltage", "V", 230.0 ) };
   supply.values[0].reading.state = State::Unreadable;
   supply.values[1].reading.state = State::Stale;
   supply.values[1].age = 42;
   EXPECT_THAT( of( "orbis_power_watts" ), IsEmpty() );
   EXPECT_THAT( of( "orbis_value_state" ),
                ElementsAre( R"({object="psu1",value="input_power"} 2)",
                             R"({object="psu1",value="output_power"} 1)" ) );
   EXPECT_THAT( of( "orbis_value_age_seconds" ),
                ElementsAre( R"({object="psu1",value="input_power"} 0.5)",
                             R"({object="psu1",value="output_power"} 42)" ) );
}

TEST_F( BoardMetricsTest, AValueInTheStateOfItsObjectHasNoStateOfItsOwn ) {
   ObjectReport &sensor = add( BoardFiles::Kind::TempSensor, "temp" );
   sensor.values = { value( "temperature", "°C", std::monostate() ) };
   sensor.state = sensor.values[0].reading.state = State::Unreadable;
   EXPECT_THAT( of( "orbis_value_state" ), IsEmpty() );
   EXPECT_THAT( of( "orbis_object_state" ),
                ElementsAre( R"({object="temp",type="temp_sensor"} 2)" ) );
}

TEST_F( BoardMetricsTest, LimitsAndExtremesStayWhileTheValueIsNotKnown ) {
   ObjectReport &sensor = add( BoardFiles::Kind::Module, "sfp1-module" );
   sensor.values = { value( "tx_power", "mW", std::monostate() ) };
   sensor.values[0].reading.state = State::Unreadable;
   sensor.health->values = { { .level = Level::Indeterminate,
                               .limits =
                                  BoardFiles::ValueLimits{ .lowCritical = 0.1, .highCritical = 2 },
                               .lowest = Health::Extreme{ 0.25, oneSecond },
                               .highest = Health::Extreme{ 0.5, oneSecond } } };
   EXPECT_THAT(
      of( "orbis_light_power_limit_watts" ),
      ElementsAre( R"({object="sfp1-module",value="tx_power",limit="low_critical"} 0.0001)",
                   R"({object="sfp1-module",value="tx_power",limit="high_critical"} 0.002)" ) );
   EXPECT_THAT( of( "orbis_light_power_lowest_watts" ),
                ElementsAre( R"({object="sfp1-module",value="tx_power"} 0.00025)" ) );
   EXPECT_THAT( of( "orbis_light_power_highest_watts" ),
                ElementsAre( R"({object="sfp1-module",value="tx_power"} 0.0005)" ) );
}

TEST_F( BoardMetricsTest, LimitsThatAllLanesShareAreThereOnce ) {
   ObjectReport &module = add( BoardFiles::Kind::Module, "q" );
   module.values = { value( "tx_bias_1", "mA", 7.0 ), value( "tx_bias_2", "mA", 7.0 ),
                     value( "rx_power_1", "mW", 1.0 ), value( "rx_power_2", "mW", 1.0 ) };
   const Health::ValueHealth bias{ .limits = BoardFiles::ValueLimits{ .highWarning = 11 } };
   Health::ValueHealth off = bias;
   off.limits->ignored = true;
   module.health->values = { bias, bias, bias, off };
   EXPECT_THAT( of( "orbis_laser_current_limit_amperes" ),
                ElementsAre( R"({object="q",value="tx_bias",limit="high_warning"} 0.011)" ) );
   EXPECT_THAT(
      of( "orbis_light_power_limit_watts" ),
      ElementsAre( R"({object="q",value="rx_power",lane="1",limit="high_warning"} 0.011)" ) );
}

TEST_F( BoardMetricsTest, ALevelIsToldOfAValueOnlyWhileItIsBeyondALimit ) {
   ObjectReport &sensor = add( BoardFiles::Kind::TempSensor, "temp" );
   sensor.values = { value( "temperature", "°C", 99.0 ) };
   for ( const Level level : { Level::Ok, Level::Indeterminate } ) {
      sensor.health->values = { { .level = level } };
      EXPECT_THAT( of( "orbis_value_level" ), IsEmpty() );
   }
   sensor.health->values = { { .level = Level::Critical } };
   EXPECT_THAT( of( "orbis_value_level" ),
                ElementsAre( R"({object="temp",value="temperature"} 2)" ) );
}

TEST_F( BoardMetricsTest, PresenceIsToldWhereItIsKnown ) {
   const auto put = [this]( BoardFiles::Kind kind, const std::string &name, State state,
                            const Scalar &scalar ) {
      ObjectReport &object = add( kind, name );
      object.values = { value( "presence", "", scalar ) };
      object.values[0].reading.state = state;
   };
   put( BoardFiles::Kind::Slot, "fan1-slot", State::Ok, std::string( "KF \"4056\"" ) );
   put( BoardFiles::Kind::Slot, "psu1-slot", State::Unmanaged, std::monostate() );
   put( BoardFiles::Kind::Slot, "psu2-slot", State::Absent, std::monostate() );
   put( BoardFiles::Kind::Xcvr, "qsfp1", State::Ok, true );
   put( BoardFiles::Kind::Xcvr, "qsfp2", State::Stale, true );
   EXPECT_THAT( of( "orbis_present" ), ElementsAre( R"({object="fan1-slot",type="slot"} 1)",
                                                    R"({object="psu1-slot",type="slot"} 1)",
                                                    R"({object="psu2-slot",type="slot"} 0)",
                                                    R"({object="qsfp1",type="xcvr"} 1)" ) );
   EXPECT_THAT( of( "orbis_slot_info" ),
                ElementsAre( R"({object="fan1-slot",description="KF \"4056\""} 1)" ) );
   EXPECT_THAT( of( "orbis_signal" ), IsEmpty() );
}

// Two boards differ in the serial of a module and in a cause.
TEST_F( BoardMetricsTest, ACauseAndASerialMakeNoNewSeriesOfAValue ) {
   ObjectReport &module = add( BoardFiles::Kind::Module, "qsfp1-module" );
   board_.objects[0].health.in = "qsfp1";
   module.values = { value( "vendor", "", std::string( "Orbis\xFF" ) ),
                     value( "part_number", "", std::string( "OQ" ) ),
                     value( "serial", "", std::string( "A1" ) ),
                     value( "temperature", "°C", 44.5 ) };
   const auto before = of( "orbis_temperature_celsius" );
   EXPECT_THAT( of( "orbis_module_info" ),
                ElementsAre( "{object=\"qsfp1-module\",cage=\"qsfp1\",vendor=\"Orbis\xEF\xBF\xBD\","
                             "part_number=\"OQ\",serial=\"A1\"} 1" ) );
   module.values[2].reading.value = std::string( "B2" );
   module.health->cause = "qsfp1-module temperature limit";
   EXPECT_EQ( of( "orbis_temperature_celsius" ), before );
   EXPECT_THAT( of( "orbis_module_info" ), ElementsAre( HasSubstr( R"(serial="B2"} 1)" ) ) );
   EXPECT_THAT(
      of( "orbis_object_cause_info" ),
      ElementsAre( R"({object="qsfp1-module",cause="qsfp1-module temperature limit"} 1)" ) );
}

TEST_F( BoardMetricsTest, ObjectsThatAreNeverReadHaveNoAge ) {
   add( BoardFiles::Kind::Led, "led" );
   EXPECT_THAT( of( "orbis_object_state" ), ElementsAre( R"({object="led",type="led"} 0)" ) );
   EXPECT_THAT( of( "orbis_object_age_seconds" ), IsEmpty() );
}

TEST_F( BoardMetricsTest, TellsTheOpenCausesAndSinceWhen ) {
   figures_.level = Level::Critical;
   figures_.causes = { { .key = "psu2-slot absent",
                         .object = "psu2-slot",
                         .level = Level::Critical,
                         .words = "no module",
                         .since = oneSecond + std::chrono::milliseconds( 250 ),
                         .isAcknowledged = true } };
   EXPECT_THAT( of( "orbis_board_level" ), ElementsAre( " 2" ) );
   EXPECT_THAT( of( "orbis_causes" ),
                ElementsAre( R"({level="warning"} 0)", R"({level="critical"} 1)" ) );
   EXPECT_THAT(
      of( "orbis_cause_since_timestamp_seconds" ),
      ElementsAre( R"({cause="psu2-slot absent",object="psu2-slot",level="critical"} 1.25)" ) );
   EXPECT_THAT( of( "orbis_cause_acknowledged" ),
                ElementsAre( R"({cause="psu2-slot absent",object="psu2-slot"} 1)" ) );
   EXPECT_THAT( of( "orbis_cause_hidden" ),
                ElementsAre( R"({cause="psu2-slot absent",object="psu2-slot"} 0)" ) );
}

TEST_F( BoardMetricsTest, EventsThatNeverCameAreCountedAsNone ) {
   figures_.events[{ Health::Event::What::Set, Level::Critical }] = 3;
   EXPECT_THAT( of( "orbis_events_total" ),
                ElementsAre( R"({kind="set",level="warning"} 0)",
                             R"({kind="set",level="critical"} 3)", R"({kind="clear",level="ok"} 0)",
                             R"({kind="acknowledged",level="warning"} 0)",
                             R"({kind="acknowledged",level="critical"} 0)",
                             R"({kind="note",level="ok"} 0)" ) );
}

TEST_F( BoardMetricsTest, TellsHowManyMembersOfARuleAreGood ) {
   board_.rules = { { .name = "supplies", .wanted = 2, .needed = 1 }, { .name = "airflow" } };
   figures_.rules = { { .good = 1, .unknown = 1 }, {} };
   EXPECT_THAT( of( "orbis_rule_good_members" ), ElementsAre( R"({rule="supplies"} 1)" ) );
   EXPECT_THAT( of( "orbis_rule_unknown_members" ), ElementsAre( R"({rule="supplies"} 1)" ) );
   EXPECT_THAT( of( "orbis_rule_wanted_members" ), ElementsAre( R"({rule="supplies"} 2)" ) );
   EXPECT_THAT( of( "orbis_rule_needed_members" ), ElementsAre( R"({rule="supplies"} 1)" ) );
}

TEST_F( BoardMetricsTest, TellsHowServeItselfWorks ) {
   figures_.name = "/boards/kelt";
   figures_.serve = { .process = processFigures(),
                      .hasPlugIn = false,
                      .childStarts = 3,
                      .rounds = 7,
                      .requests = { { 200, 5 }, { 404, 1 } } };
   EXPECT_THAT( of( "orbis_board_info" ), ElementsAre( R"({board="/boards/kelt"} 1)" ) );
   EXPECT_THAT( of( "orbis_build_info" ), ElementsAre( HasSubstr( R"({version=")" ) ) );
   EXPECT_THAT( of( "orbis_plug_in_up" ), ElementsAre( " 0" ) );
   EXPECT_THAT( of( "orbis_plug_in_starts_total" ), ElementsAre( " 3" ) );
   EXPECT_THAT( of( "orbis_rounds_total" ), ElementsAre( " 7" ) );
   EXPECT_THAT( of( "orbis_round_duration_seconds" ), IsEmpty() );
   EXPECT_THAT( of( "orbis_http_requests_total" ),
                ElementsAre( R"({code="200"} 5)", R"({code="404"} 1)" ) );
   figures_.serve.roundDuration = 0.25;
   EXPECT_THAT( of( "orbis_round_duration_seconds" ), ElementsAre( " 0.25" ) );
   for ( const char *family :
         { "process_cpu_seconds_total", "process_resident_memory_bytes",
           "process_start_time_seconds", "process_open_fds", "process_max_fds" } )
      EXPECT_EQ( of( family ).size(), 1u ) << family;
}

TEST_F( BoardMetricsTest, TellsWhatPassedOnEachBus ) {
   auto loads = std::make_shared<SmbusControl::Response>();
   SmbusControl::BusLoad &bus = *loads->add_bus();
   bus.set_bus( "scd(4):1:2" );
   bus.mutable_totals()->set_transfers( 12 );
   bus.mutable_totals()->set_failures( 2 );
   bus.mutable_totals()->set_bytes( 48 );
   bus.mutable_totals()->set_wire_ns( 1'440'000 );
   bus.mutable_totals()->set_busy_ns( 2'000'000 );
   bus.set_failed_transactions( 1 );
   bus.mutable_errors()->set_pec( 2 );
   bus.set_held( "" );
   for ( const auto &[upTo, count] :
         { std::pair( 10'000, 4 ), { 10'001, 1 }, { 2'000'000'000, 2 }, { 2'100'000'000, 1 } } ) {
      SmbusControl::Latency &latency = *bus.add_latency();
      latency.set_up_to_ns( static_cast<uint64_t>( upTo ) );
      latency.set_count( static_cast<uint64_t>( count ) );
   }
   bus.set_latency_ns( 6'000'000'000 );
   figures_.loads = { loads, 1.5 };
   const auto is = [this]( const std::string &family, const std::string &number ) {
      EXPECT_THAT( of( family ), ElementsAre( R"({bus="scd(4):1:2"} )" + number ) ) << family;
   };
   is( "orbis_bus_transfers_total", "12" );
   is( "orbis_bus_failed_transfers_total", "2" );
   is( "orbis_bus_bytes_total", "48" );
   is( "orbis_bus_wire_seconds_total", "0.00144" );
   is( "orbis_bus_busy_seconds_total", "0.002" );
   is( "orbis_bus_failed_transactions_total", "1" );
   is( "orbis_bus_held", "1" );
   is( "orbis_bus_transaction_seconds_sum", "6" );
   is( "orbis_bus_transaction_seconds_count", "8" );
   EXPECT_THAT( of( "orbis_bus_accounts_age_seconds" ), ElementsAre( " 1.5" ) );
   EXPECT_THAT( of( "orbis_bus_errors_total" ),
                ElementsAre( R"({bus="scd(4):1:2",kind="nack"} 0)",
                             R"({bus="scd(4):1:2",kind="pec"} 2)",
                             R"({bus="scd(4):1:2",kind="timeout"} 0)",
                             R"({bus="scd(4):1:2",kind="held-low"} 0)",
                             R"({bus="scd(4):1:2",kind="other"} 0)" ) );
   const auto buckets = of( "orbis_bus_transaction_seconds_bucket" );
   ASSERT_EQ( buckets.size(), 13u );
   EXPECT_EQ( buckets[0], R"({bus="scd(4):1:2",le="1e-05"} 4)" );
   EXPECT_EQ( buckets[1], R"({bus="scd(4):1:2",le="3e-05"} 5)" );
   EXPECT_EQ( buckets[10], R"({bus="scd(4):1:2",le="1.0"} 5)" );
   EXPECT_EQ( buckets[11], R"({bus="scd(4):1:2",le="3.0"} 8)" );
   EXPECT_EQ( buckets[12], R"({bus="scd(4):1:2",le="+Inf"} 8)" );
}

TEST_F( BoardMetricsTest, OfBussesThatNobodyKnowsOnlyForHowLongIsTold ) {
   figures_.loads.age = 5;
   EXPECT_THAT( of( "orbis_bus_accounts_age_seconds" ), ElementsAre( " 5" ) );
   EXPECT_THAT( text(), ::testing::Not( HasSubstr( "orbis_bus_held" ) ) );
}

TEST_F( BoardMetricsTest, FiguresOfAServerThatIsGoneAreNotToldForEver ) {
   SmbusControl::Response loads;
   loads.add_bus()->set_bus( "scd(4):1:2" );
   figures_.loads = { std::make_shared<const SmbusControl::Response>( loads ), 59 };
   EXPECT_THAT( of( "orbis_bus_held" ), ElementsAre( R"({bus="scd(4):1:2"} 0)" ) );
   figures_.loads.age = 61;
   EXPECT_THAT( of( "orbis_bus_held" ), IsEmpty() );
   EXPECT_THAT( of( "orbis_bus_accounts_age_seconds" ), ElementsAre( " 61" ) );
}

TEST_F( BoardMetricsTest, EachUnitOfAReadingHasAFamily ) {
   for ( const char *unit : { "°C", "rpm", "%", "V", "A", "W", "mA", "mW" } )
      EXPECT_NE( baseUnitOf( unit ), nullptr ) << unit;
   EXPECT_EQ( baseUnitOf( "" ), nullptr );
}

TEST_F( BoardMetricsTest, TheDocumentTellsOfEachFamilyAndOfNoOther ) {
   std::ifstream file( DOCS "/metrics.md" );
   const std::regex row( R"(\| `(\w+)` \| (\w+) \| (\w*) ?\|[^|]*\| (.*) \|)" );
   std::vector<std::string> documented, given;
   for ( std::string line; std::getline( file, line ); )
      if ( std::smatch parts; std::regex_match( line, parts, row ) )
         documented.push_back( fmt::format( "{} {} {}: {}", parts[1].str(), parts[2].str(),
                                            parts[3].str(), parts[4].str() ) );
   for ( const Metrics::Description &one : BoardFamilies::descriptions() )
      given.push_back(
         fmt::format( "{} {} {}: {}", seriesName( one ), nameOf( one.type ), one.unit, one.help ) );
   EXPECT_THAT( documented, ::testing::UnorderedElementsAreArray( given ) );
}

TEST_F( BoardMetricsTest, OpenMetricsEndsAsItHasTo ) {
   EXPECT_TRUE( text( Metrics::Format::OpenMetrics ).ends_with( "\n# EOF\n" ) );
   EXPECT_THAT( text( Metrics::Format::OpenMetrics ), HasSubstr( "# TYPE orbis_build info\n" ) );
}

} // namespace
} // namespace Host
