#include "Operations.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cstdlib>
#include <exception>

namespace {

// Outputs start with this number, which is never a reading, to show that nothing was written.
constexpr int untouched = 77;

std::string shown( int value ) { return fmt::format( "{}", value ); }
std::string shown( unsigned value ) { return fmt::format( "{}", value ); }
std::string shown( float value ) { return fmt::format( "{:a}", value ); } // to the last bit

template <class Record, class Value>
Operation gets( const std::string &words, Record *record,
                pl_status ( *get )( Record *, Value * ) ) {
   return { words, [=]( Random & ) {
              auto value = static_cast<Value>( untouched );
              const pl_status status = get( record, &value );
              return fmt::format( "-> {} {}", int( status ), shown( value ) );
           } };
}

template <class Record, class Value>
Operation sets( const std::string &words, Record *record, pl_status ( *set )( Record *, Value ),
                int least, int most ) {
   return { words, [=]( Random &random ) {
              const int value = random.between( least, most );
              return fmt::format( "{} -> {}", value,
                                  int( set( record, static_cast<Value>( value ) ) ) );
           } };
}

template <class Record, class Result>
Operation asks( const std::string &words, Record *record, Result ( *ask )( Record * ) ) {
   return { words, [=]( Random & ) { return fmt::format( "-> {}", int( ask( record ) ) ); } };
}

uint8_t byteFrom( Random &random ) { return static_cast<uint8_t>( random.below( 256 ) ); }

// Runs a transfer with a command and this number of bytes. Returns the result with all bytes.
using Transfer = std::function<int( uint8_t command, uint8_t *bytes, unsigned &length )>;
Operation transfers( const std::string &words, unsigned most, Transfer transfer ) {
   return { words, [=]( Random &random ) {
              std::array<uint8_t, 256> bytes;
              const uint8_t command = byteFrom( random );
              unsigned length = 1 + random.below( most );
              for ( uint8_t &byte : bytes )
                 byte = static_cast<uint8_t>( random.below( 256 ) );
              std::string outcome;
              try {
                 outcome = fmt::format( "{}", transfer( command, bytes.data(), length ) );
              } catch ( const std::exception &exception ) {
                 outcome = exception.what();
              }
              return fmt::format( "{:#x} -> {} {} {:02x}", command, outcome, length,
                                  fmt::join( bytes.begin(), bytes.begin() + length, " " ) );
           } };
}

} // namespace

Operations operationsOf( const std::string &name, pl_slot *slot ) {
   return { { name + " get_presence", [=]( Random & ) {
                char *text = nullptr;
                const pl_status status = slot->ops->get_presence( slot, &text );
                const std::string line = text ? text : "-";
                std::free( text );
                return fmt::format( "-> {} {}", int( status ), line );
             } } };
}

Operations operationsOf( const std::string &name, pl_led *led ) {
   return { sets( name + " set_light_setting", led, led->ops->set_light_setting, PL_LED_OFF,
                  PL_LED_BEACON ) };
}

Operations operationsOf( const std::string &name, pl_temp_sensor *sensor ) {
   return { gets( name + " get_temperature", sensor, sensor->ops->get_temperature ) };
}

Operations operationsOf( const std::string &name, pl_fan *fan ) {
   return { gets( name + " get_rpm", fan, fan->ops->get_rpm ),
            sets( name + " set_rpm", fan, fan->ops->set_rpm, -2000, 30000 ) };
}

Operations operationsOf( const std::string &name, pl_psu *psu ) {
   const pl_psu_ops &ops = *psu->ops;
   return { gets( name + " get_power_ok", psu, ops.get_power_ok ),
            gets( name + " get_input_current", psu, ops.get_input_current ),
            gets( name + " get_output_current", psu, ops.get_output_current ),
            gets( name + " get_input_voltage", psu, ops.get_input_voltage ),
            gets( name + " get_output_voltage", psu, ops.get_output_voltage ),
            gets( name + " get_input_power", psu, ops.get_input_power ),
            gets( name + " get_output_power", psu, ops.get_output_power ) };
}

Operations operationsOf( const std::string &name, pl_gpio *gpio ) {
   return { asks( name + " bit_set", gpio, gpio->ops->bit_set ),
            asks( name + " bit_clear", gpio, gpio->ops->bit_clear ),
            gets( name + " bit_read", gpio, gpio->ops->bit_read ) };
}

Operations operationsOf( const std::string &name, pl_xcvr *xcvr ) {
   if ( xcvr->ops->kind == PL_XCVR_SFP ) {
      const pl_sfp_ops &ops = xcvr->ops->sfp;
      return { asks( name + " get_presence", xcvr, ops.get_presence ),
               gets( name + " get_tx_fault", xcvr, ops.get_tx_fault ),
               gets( name + " get_rx_los", xcvr, ops.get_rx_los ),
               gets( name + " get_tx_disable", xcvr, ops.get_tx_disable ),
               sets( name + " set_tx_disable", xcvr, ops.set_tx_disable, 0, 1 ) };
   }
   const pl_qsfp_ops &ops = xcvr->ops->qsfp;
   return { asks( name + " get_presence", xcvr, ops.get_presence ),
            gets( name + " get_mod_sel", xcvr, ops.get_mod_sel ),
            sets( name + " set_mod_sel", xcvr, ops.set_mod_sel, 0, 1 ),
            gets( name + " get_lp_mode", xcvr, ops.get_lp_mode ),
            sets( name + " set_lp_mode", xcvr, ops.set_lp_mode, 0, 1 ),
            gets( name + " get_reset", xcvr, ops.get_reset ),
            sets( name + " set_reset", xcvr, ops.set_reset, 0, 1 ),
            gets( name + " get_interrupt", xcvr, ops.get_interrupt ) };
}

Operations operationsOf( const std::string &name, pl_smbus *smbus ) {
   const pl_smbus_ops &ops = *smbus->ops;
   const auto word = []( const uint8_t *bytes ) {
      return static_cast<uint16_t>( bytes[0] | bytes[1] << 8 );
   };
   const auto put = []( uint16_t value, uint8_t *bytes ) {
      bytes[0] = static_cast<uint8_t>( value );
      bytes[1] = static_cast<uint8_t>( value >> 8 );
   };
   return {
      transfers( name + " quick_command", 1,
                 [=, &ops]( uint8_t command, uint8_t *, unsigned & ) {
                    return ops.quick_command( smbus, command & 1 );
                 } ),
      transfers( name + " receive_byte", 1,
                 [=, &ops]( uint8_t, uint8_t *bytes, unsigned & ) {
                    return ops.receive_byte( smbus, bytes );
                 } ),
      transfers( name + " send_byte", 1,
                 [=, &ops]( uint8_t command, uint8_t *, unsigned & ) {
                    return ops.send_byte( smbus, command );
                 } ),
      transfers( name + " read_byte", 1,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned & ) {
                    return ops.read_byte( smbus, command, bytes );
                 } ),
      transfers( name + " write_byte", 1,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned & ) {
                    return ops.write_byte( smbus, command, bytes[0] );
                 } ),
      transfers( name + " read_word", 2,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned & ) {
                    uint16_t value = untouched;
                    const pl_status status = ops.read_word( smbus, command, &value );
                    put( value, bytes );
                    return status;
                 } ),
      transfers( name + " write_word", 2,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned & ) {
                    return ops.write_word( smbus, command, word( bytes ) );
                 } ),
      transfers( name + " block_read", 1,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned &length ) {
                    return ops.block_read( smbus, command, bytes, &length );
                 } ),
      transfers( name + " block_write", 16,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned &length ) {
                    return ops.block_write( smbus, command, bytes, length );
                 } ),
      transfers( name + " i2c_block_read", 32,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned &length ) {
                    return ops.i2c_block_read( smbus, command, bytes, length );
                 } ),
      transfers( name + " i2c_block_write", 16,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned &length ) {
                    return ops.i2c_block_write( smbus, command, bytes, length );
                 } ),
      transfers( name + " process_call", 2,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned & ) {
                    uint16_t value = untouched;
                    const pl_status status =
                       ops.process_call( smbus, command, word( bytes ), &value );
                    put( value, bytes );
                    return status;
                 } ),
      transfers( name + " block_process_call", 16,
                 [=, &ops]( uint8_t command, uint8_t *bytes, unsigned &length ) {
                    uint8_t count = 0;
                    return ops.block_process_call( smbus, command, bytes,
                                                   static_cast<uint8_t>( length ), bytes, &count );
                 } ),
   };
}

Operations operationsOf( const std::string &name, pl_system *system ) {
   return { { name + " get_reload_cause", [=]( Random & ) {
                char cause[100] = "untouched", description[500] = "untouched";
                long time = untouched;
                const pl_status status =
                   system->ops->get_reload_cause( system, &cause, &time, &description );
                return fmt::format( "-> {} {} {} {}", int( status ), cause, time, description );
             } } };
}
