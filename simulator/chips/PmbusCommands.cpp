// The commands of the simulated supply: what each reads and writes.
#include "simulator/chips/PmbusFormats.h"
#include "simulator/chips/PmbusSupply.h"

namespace Simulator {

namespace {

constexpr int voutExponent = -9; // VOUT_MODE 0x17: linear

std::string byte( unsigned value ) { return std::string( 1, static_cast<char>( value ) ); }
std::string word( unsigned value ) { return byte( value & 0xFF ) + byte( value >> 8 ); }
std::string linear11( double value ) { return word( toLinear11( value ) ); }
std::string volts( double value ) { return word( toLinear16( value, voutExponent ) ); }
std::string block( const std::string &text ) {
   return byte( static_cast<unsigned>( text.size() ) ) + text;
}
uint16_t wordOf( const std::string &data ) {
   return static_cast<uint16_t>( static_cast<uint8_t>( data[0] ) | static_cast<uint8_t>( data[1] )
                                                                      << 8 );
}

} // namespace

const std::map<uint8_t, PmbusSupply::Command> &PmbusSupply::commands() {
   using Self = PmbusSupply;
   using Data = const std::string;
   static const std::map<uint8_t, Command> all{
      // PAGE: there is only page 0; 0xFF means all pages.
      { 0x00,
        { 1, []( Self & ) { return byte( 0 ); },
          []( Self &, Data &data ) { return data == byte( 0 ) || data == byte( 0xFF ); } } },
      // OPERATION: on, off at once, off softly
      { 0x01,
        { 1, []( Self &self ) { return byte( self.operation_ ); },
          []( Self &self, Data &data ) {
             const auto operation = static_cast<uint8_t>( data[0] );
             if ( operation != 0x80 && operation != 0x00 && operation != 0x40 )
                return false;
             self.operation_ = operation;
             self.model_.enabledIs( operation == 0x80 );
             return true;
          } } },
      // CLEAR_FAULTS
      { 0x03,
        { 0, nullptr,
          []( Self &self, Data & ) {
             self.status_ = {};
             return true;
          } } },
      { 0x19, { 0, []( Self & ) { return byte( 0xA0 ); } } }, // CAPABILITY: PEC, 400 kHz
      { 0x20, { 0, []( Self & ) { return byte( voutExponent & 0x1F ); } } }, // VOUT_MODE
      // FAN_CONFIG_1_2: driven by duty cycle, two pulses a turn
      { 0x3A,
        { 0,
          []( Self &self ) {
             const auto &maxRpm = self.model_.rating().maxRpm;
             return byte( ( maxRpm[0] > 0 ? 0x90u : 0 ) | ( maxRpm[1] > 0 ? 0x09u : 0 ) );
          } } },
      // FAN_COMMAND_1 and _2
      { 0x3B,
        { 2, []( Self &self ) { return word( self.fanCommand_[0] ); },
          []( Self &self, Data &data ) { return self.commandFan( 0, data ); } } },
      { 0x3C,
        { 2, []( Self &self ) { return word( self.fanCommand_[1] ); },
          []( Self &self, Data &data ) { return self.commandFan( 1, data ); } } },
      // VOUT_OV_FAULT_LIMIT, _OV_WARN_, _UV_WARN_, _UV_FAULT_
      { 0x40, { 0, []( Self &self ) { return volts( self.limits_.highOutputVolts.fault ); } } },
      { 0x42, { 0, []( Self &self ) { return volts( self.limits_.highOutputVolts.warning ); } } },
      { 0x43, { 0, []( Self &self ) { return volts( self.limits_.lowOutputVolts.warning ); } } },
      { 0x44, { 0, []( Self &self ) { return volts( self.limits_.lowOutputVolts.fault ); } } },
      // IOUT_OC_FAULT_LIMIT, _OC_WARN_, OT_FAULT_LIMIT, OT_WARN_
      { 0x46, { 0, []( Self &self ) { return linear11( self.limits_.amperes.fault ); } } },
      { 0x4A, { 0, []( Self &self ) { return linear11( self.limits_.amperes.warning ); } } },
      { 0x4F, { 0, []( Self &self ) { return linear11( self.limits_.celsius.fault ); } } },
      { 0x51, { 0, []( Self &self ) { return linear11( self.limits_.celsius.warning ); } } },
      // VIN_OV_FAULT_LIMIT, _OV_WARN_, _UV_WARN_, _UV_FAULT_
      { 0x55, { 0, []( Self &self ) { return linear11( self.limits_.highLine.fault ); } } },
      { 0x57, { 0, []( Self &self ) { return linear11( self.limits_.highLine.warning ); } } },
      { 0x58, { 0, []( Self &self ) { return linear11( self.limits_.lowLine.warning ); } } },
      { 0x59, { 0, []( Self &self ) { return linear11( self.limits_.lowLine.fault ); } } },
      // POUT_OP_WARN_LIMIT, PIN_OP_WARN_
      { 0x6A, { 0, []( Self &self ) { return linear11( self.limits_.outputWatts ); } } },
      { 0x6B, { 0, []( Self &self ) { return linear11( self.limits_.inputWatts ); } } },
      { 0x78, { 0, []( Self &self ) { return byte( self.statusWord() & 0xFF ); } } }, // STATUS_BYTE
      { 0x79, { 0, []( Self &self ) { return word( self.statusWord() ); } } },        // STATUS_WORD
      { 0x7A, { 0, []( Self &self ) { return byte( self.status_[Vout] ); } } },
      { 0x7B, { 0, []( Self &self ) { return byte( self.status_[Iout] ); } } },
      { 0x7C, { 0, []( Self &self ) { return byte( self.status_[Input] ); } } },
      { 0x7D, { 0, []( Self &self ) { return byte( self.status_[Temperature] ); } } },
      { 0x7E, { 0, []( Self &self ) { return byte( self.status_[Cml] ); } } },
      { 0x81, { 0, []( Self &self ) { return byte( self.status_[Fans] ); } } },
      // READ_VIN, _IIN, _VOUT, _IOUT, _TEMPERATURE_1 and _2, _FAN_SPEED_1 and _2, _POUT, _PIN
      { 0x88, { 0, []( Self &self ) { return linear11( self.model_.line() ); } } },
      { 0x89, { 0, []( Self &self ) { return linear11( self.model_.inputAmperes() ); } } },
      { 0x8B, { 0, []( Self &self ) { return volts( self.model_.outputVolts() ); } } },
      { 0x8C, { 0, []( Self &self ) { return linear11( self.model_.outputAmperes() ); } } },
      { 0x8D, { 0, []( Self &self ) { return linear11( self.model_.inletCelsius() ); } } },
      { 0x8E, { 0, []( Self &self ) { return linear11( self.model_.hotSpotCelsius() ); } } },
      { 0x90, { 0, []( Self &self ) { return linear11( self.model_.rpm( 0 ) ); } } },
      { 0x91, { 0, []( Self &self ) { return linear11( self.model_.rpm( 1 ) ); } } },
      { 0x96, { 0, []( Self &self ) { return linear11( self.model_.outputWatts() ); } } },
      { 0x97, { 0, []( Self &self ) { return linear11( self.model_.inputWatts() ); } } },
      { 0x98, { 0, []( Self & ) { return byte( 0x11 ); } } }, // PMBUS_REVISION: 1.1, both parts
      { 0x99, { 0, []( Self &self ) { return block( self.identity_.manufacturer ); } } },
      { 0x9A, { 0, []( Self &self ) { return block( self.identity_.model ); } } },
      { 0x9B, { 0, []( Self &self ) { return block( self.identity_.revision ); } } },
      { 0x9E, { 0, []( Self &self ) { return block( self.identity_.serial ); } } },
   };
   return all;
}

bool PmbusSupply::commandFan( unsigned fan, const std::string &data ) {
   const double percent = fromLinear11( wordOf( data ) );
   if ( percent < 0 || percent > 100 || model_.rating().maxRpm[fan] == 0 )
      return false;
   fanCommand_[fan] = wordOf( data );
   model_.dutyIs( fan, percent );
   return true;
}

} // namespace Simulator
