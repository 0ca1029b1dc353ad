#include "host/plugin/ObjectCalls.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <stdexcept>

namespace Host {
namespace {

std::vector<Reading> readAll( const Record &record ) {
   std::vector<std::string> begun;
   std::vector<Reading> readings;
   read( record, { .begun = [&]( std::string_view name ) { begun.emplace_back( name ); },
                   .done =
                      [&]( const Reading &reading ) {
                         EXPECT_EQ( begun.back(), reading.name );
                         readings.push_back( reading );
                      } } );
   return readings;
}

template <class Record, class Ops>
Reading readOne( const Ops &ops ) {
   Record record{ nullptr, &ops, nullptr };
   const auto readings = readAll( &record );
   EXPECT_EQ( readings.size(), 1u );
   return readings.at( 0 );
}

Reading readTemperature( pl_status ( *operation )( pl_temp_sensor *, float * ) ) {
   return readOne<pl_temp_sensor>(
      pl_temp_sensor_ops{ sizeof( pl_temp_sensor_ops ), nullptr, operation } );
}

TEST( ReadingsTest, GivesAFloatAsItsShortestDecimal ) {
   const Reading reading = readTemperature( []( pl_temp_sensor *, float *celsius ) {
      *celsius = -24.1f;
      return PL_STATUS_OK;
   } );
   EXPECT_EQ( reading.state, State::Ok );
   EXPECT_EQ( std::get<double>( reading.value ), -24.1 );
   EXPECT_EQ( reading.unit, "°C" );
}

TEST( ReadingsTest, GivesAFailureItsStatusAndNoValue ) {
   const Reading reading = readTemperature( []( pl_temp_sensor *, float *celsius ) {
      *celsius = 5;
      return PL_STATUS_TRANSACTION;
   } );
   EXPECT_EQ( reading.state, State::Unreadable );
   EXPECT_EQ( reading.fault.status, 6 );
   EXPECT_EQ( reading.value, Scalar() );
}

TEST( ReadingsTest, CallsUnreadableWhatIsNotANumber ) {
   const Reading reading = readTemperature( []( pl_temp_sensor *, float *celsius ) {
      *celsius = std::nanf( "" );
      return PL_STATUS_OK;
   } );
   EXPECT_EQ( reading.state, State::Unreadable );
   EXPECT_EQ( reading.fault.words, "the value is not a number" );
}

TEST( ReadingsTest, SeparatesAnExceptionFromAMissingOperation ) {
   const Reading fault = readTemperature(
      []( pl_temp_sensor *, float * ) -> pl_status { throw std::runtime_error( "stoi" ); } );
   EXPECT_EQ( fault.state, State::Unreadable );
   EXPECT_EQ( fault.fault.words, "stoi" );
   const Reading missing = readTemperature( []( pl_temp_sensor *, float * ) -> pl_status {
      throw std::runtime_error( "Not implemented read32" );
   } );
   EXPECT_EQ( missing.state, State::Unsupported );
}

TEST( ReadingsTest, CallsUnsupportedWhatTheTableDoesNotHave ) {
   EXPECT_EQ( readTemperature( nullptr ).state, State::Unsupported );
   const pl_fan_ops shorter{ offsetof( pl_fan_ops, get_rpm ), nullptr,
                             []( pl_fan *, int * ) { return PL_STATUS_OK; }, nullptr };
   EXPECT_EQ( readOne<pl_fan>( shorter ).state, State::Unsupported );
}

Reading readSlot( pl_status ( *operation )( pl_slot *, char ** ) ) {
   return readOne<pl_slot>( pl_slot_ops{ sizeof( pl_slot_ops ), operation } );
}

TEST( ReadingsTest, SeparatesAnAbsentModuleFromAnUnreadableOne ) {
   const Reading module = readSlot( []( pl_slot *, char **description ) {
      *description = ::strdup( "PWR-1" );
      return PL_STATUS_OK;
   } );
   EXPECT_EQ( std::get<std::string>( module.value ), "PWR-1" );
   EXPECT_EQ( readSlot( []( pl_slot *, char ** ) { return PL_STATUS_NOT_MANAGED; } ).state,
              State::Absent );
   EXPECT_EQ( readSlot( []( pl_slot *, char ** ) { return PL_STATUS_TRANSACTION; } ).state,
              State::Unreadable );
}

TEST( ReadingsTest, ReadsAllSevenOfASupply ) {
   pl_psu_ops ops{};
   ops.size = sizeof ops;
   ops.get_power_ok = []( pl_psu *, int *ok ) { return *ok = 1, PL_STATUS_OK; };
   ops.get_output_voltage = []( pl_psu *, float *volts ) { return *volts = 12.5f, PL_STATUS_OK; };
   pl_psu psu{ nullptr, &ops, nullptr };
   const auto readings = readAll( &psu );
   ASSERT_EQ( readings.size(), 7u );
   EXPECT_EQ( readings[0].value, Scalar( int64_t{ 1 } ) );
   EXPECT_EQ( readings[4].name, "output_voltage" );
   EXPECT_EQ( readings[4].value, Scalar( 12.5 ) );
   EXPECT_EQ( readings[6].state, State::Unsupported );
}

TEST( ReadingsTest, ReadsACageByItsOwnHalfOfTheTable ) {
   pl_xcvr_ops ops{ .size = sizeof ops, .kind = PL_XCVR_QSFP, .qsfp = {} };
   ops.qsfp.size = sizeof ops.qsfp;
   ops.qsfp.get_presence = []( pl_xcvr * ) { return 0; };
   ops.qsfp.get_reset = []( pl_xcvr *, int *reset ) { return *reset = 1, PL_STATUS_OK; };
   pl_xcvr cage{ nullptr, &ops, nullptr };
   const auto qsfp = readAll( &cage );
   ASSERT_EQ( qsfp.size(), 5u );
   EXPECT_EQ( qsfp[0].state, State::Absent );
   EXPECT_EQ( qsfp[3].name, "reset" );
   EXPECT_EQ( qsfp[3].value, Scalar( int64_t{ 1 } ) );
   ops.kind = PL_XCVR_SFP;
   EXPECT_EQ( readAll( &cage ).size(), 4u );
}

TEST( ReadingsTest, ReadsNothingFromLedsAndProxies ) {
   pl_led led{};
   pl_smbus proxy{};
   EXPECT_TRUE( readAll( &led ).empty() );
   EXPECT_TRUE( readAll( &proxy ).empty() );
}

TEST( ReadingsTest, CallsAReloadCauseThatIsNotProvidedUnsupported ) {
   const pl_system_ops ops{ sizeof ops, nullptr, nullptr,
                            []( pl_system *, char( * )[100], long *, char( * )[500] ) {
                               return PL_STATUS_NOT_PROVIDED;
                            } };
   pl_system system{ nullptr, &ops };
   const auto readings = readAll( &system );
   ASSERT_EQ( readings.size(), 1u );
   EXPECT_EQ( readings[0].state, State::Unsupported );
   EXPECT_EQ( readings[0].fault.status, 5 );
}

} // namespace
} // namespace Host
