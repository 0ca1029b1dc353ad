#include "host/plugin/ObjectCalls.h"

#include <gtest/gtest.h>
#include <pl.h>
#include <stdexcept>

namespace Host {
namespace {

std::string calls; // the calls of the functions below, for the running test

Reading actOn( const Record &record, const Action &action ) {
   calls.clear();
   Reading result;
   act( record, action,
        { .begun = []( std::string_view ) {},
          .done = [&]( const Reading &reading ) { result = reading; } } );
   return result;
}

void note( const std::string &text ) { calls += text; }

TEST( ActionsTest, SetsAFansSpeed ) {
   const pl_fan_ops ops{ sizeof ops, nullptr, nullptr, []( pl_fan *, int rpm ) {
                           note( std::to_string( rpm ) );
                           return PL_STATUS_OK;
                        } };
   pl_fan fan{ nullptr, &ops, nullptr };
   const Reading result = actOn( &fan, { "set_rpm", { 9000 } } );
   EXPECT_EQ( result.state, State::Ok );
   EXPECT_EQ( calls, "9000" );
}

Reading setLed( pl_status ( *operation )( pl_led *, pl_led_status ) ) {
   const pl_led_ops ops{ sizeof ops, operation };
   pl_led led{ nullptr, &ops, nullptr };
   return actOn( &led, { "set_light_setting", { PL_LED_INACTIVE } } );
}

TEST( ActionsTest, ReportsWhatADriverDoesNotSupport ) {
   const Reading setting =
      setLed( []( pl_led *, pl_led_status ) { return PL_STATUS_UNSUPPORTED; } );
   EXPECT_EQ( setting.state, State::Unsupported );
   EXPECT_EQ( setting.fault.status, 3 );
   EXPECT_EQ( setLed( nullptr ).state, State::Unsupported );
   const Reading thrown = setLed( []( pl_led *, pl_led_status ) -> pl_status {
      throw std::runtime_error( "Not implemented quickCommand" );
   } );
   EXPECT_EQ( thrown.state, State::Unsupported );
   const Reading failed = setLed( []( pl_led *, pl_led_status ) { return PL_STATUS_TRANSACTION; } );
   EXPECT_EQ( failed.state, State::Unreadable );
   EXPECT_EQ( failed.fault.status, 6 );
}

TEST( ActionsTest, ReadsAndSetsBits ) {
   const pl_gpio_ops ops{ sizeof ops, []( pl_gpio * ) { return note( "set" ), PL_STATUS_OK; },
                          []( pl_gpio * ) { return note( "clear" ), PL_STATUS_OK; },
                          []( pl_gpio *, unsigned *bit ) { return *bit = 1, PL_STATUS_OK; } };
   pl_gpio gpio{ nullptr, &ops, nullptr };
   actOn( &gpio, { "bit_clear", {} } );
   EXPECT_EQ( calls, "clear" );
   actOn( &gpio, { "bit_set", {} } );
   EXPECT_EQ( calls, "set" );
   EXPECT_EQ( actOn( &gpio, { "bit_read", {} } ).value, Scalar( int64_t{ 1 } ) );
   EXPECT_EQ( calls, "" );
}

TEST( ActionsTest, AsksACageForTheLinesOfItsKindOnly ) {
   pl_xcvr_ops ops{};
   ops.size = sizeof ops;
   ops.kind = PL_XCVR_SFP;
   ops.sfp.size = sizeof ops.sfp;
   ops.sfp.set_tx_disable = []( pl_xcvr *, int on ) {
      return note( on ? "disabled" : "enabled" ), PL_STATUS_OK;
   };
   pl_xcvr cage{ nullptr, &ops, nullptr };
   EXPECT_EQ( actOn( &cage, { "set_tx_disable", { 1 } } ).state, State::Ok );
   EXPECT_EQ( calls, "disabled" );
   EXPECT_EQ( actOn( &cage, { "set_reset", { 1 } } ).state, State::Unsupported );
}

TEST( ActionsTest, GivesWhatAProxyReadsAsHex ) {
   pl_smbus_ops ops{};
   ops.size = sizeof ops;
   ops.read_byte = []( pl_smbus *, uint8_t command, uint8_t *value ) {
      return *value = static_cast<uint8_t>( command + 1 ), PL_STATUS_OK;
   };
   ops.process_call = []( pl_smbus *, uint8_t command, uint16_t word, uint16_t *answer ) {
      return *answer = static_cast<uint16_t>( word + command ), PL_STATUS_OK;
   };
   ops.block_read = []( pl_smbus *, uint8_t, uint8_t *buffer, unsigned *length ) {
      buffer[0] = 0x50;
      buffer[1] = 0x07;
      return *length = 2, PL_STATUS_OK;
   };
   ops.block_write = []( pl_smbus *, uint8_t command, const uint8_t *bytes, unsigned length ) {
      note( std::to_string( command ) + ":" + std::to_string( length ) + ":" +
            std::to_string( bytes[1] ) );
      return PL_STATUS_OK;
   };
   pl_smbus proxy{ nullptr, &ops, nullptr };
   EXPECT_EQ( actOn( &proxy, { "read_byte", { 4 } } ).value, Scalar( "0x05" ) );
   EXPECT_EQ( actOn( &proxy, { "process_call", { 1, 0xFE } } ).value, Scalar( "0x00ff" ) );
   EXPECT_EQ( actOn( &proxy, { "block_read", { 1 } } ).value, Scalar( "50 07" ) );
   actOn( &proxy, { "block_write", { 9, 1, 77 } } );
   EXPECT_EQ( calls, "9:2:77" );
   EXPECT_EQ( actOn( &proxy, { "write_word", { 1, 2 } } ).state, State::Unsupported );
}

} // namespace
} // namespace Host
