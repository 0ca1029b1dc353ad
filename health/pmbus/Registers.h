#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// What a power supply with PMBus says of itself, from the bytes that it was asked for. Sources:
// PMBus Power System Management Protocol Specification, Part II, "Status reporting" and "Data
// formats".
namespace Health::Pmbus {

// STATUS_WORD is a word, the other status registers and VOUT_MODE are bytes. CLEAR_FAULTS has no
// data.
enum Command : uint8_t {
   ClearFaults = 0x03,
   VoutMode = 0x20,
   StatusWord = 0x79,
   StatusVout = 0x7A,
   StatusIout = 0x7B,
   StatusInput = 0x7C,
   StatusTemperature = 0x7D,
   StatusCml = 0x7E,
   StatusFans12 = 0x81,
};

// Values by their commands. One that was not read is not in it.
using Registers = std::map<uint8_t, uint16_t>;

// The registers that the summary bits of a STATUS_WORD point to. None when nothing is wrong.
std::vector<uint8_t> registersBehind( uint16_t statusWord );

// As one text, "0x79=0x2848 0x7c=0x18", and back. What can't be read in it is left out.
std::string toText( const Registers &registers );
Registers registersIn( std::string_view text );

} // namespace Health::Pmbus
