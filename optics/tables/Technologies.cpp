// How the light is made, or of which copper the cable is: SFF-8636, page 00h, byte 147, bits 7 to
// 4; CMIS, page 00h, byte 212.
#include "optics/Names.h"
#include "optics/tables/Tables.h"

namespace Optics {

namespace {

constexpr NamedNumber technologies[] = {
   { 0x00, "850 nm VCSEL" },
   { 0x01, "1310 nm VCSEL" },
   { 0x02, "1550 nm VCSEL" },
   { 0x03, "1310 nm FP" },
   { 0x04, "1310 nm DFB" },
   { 0x05, "1550 nm DFB" },
   { 0x06, "1310 nm EML" },
   { 0x07, "1550 nm EML" },
   { 0x08, "other" },
   { 0x09, "1490 nm DFB" },
   { 0x0A, "copper cable, passive, not equalized" },
   { 0x0B, "copper cable, passive, equalized" },
   { 0x0C, "copper cable, active, limiting at both ends" },
   { 0x0D, "copper cable, active, limiting at the far end" },
   { 0x0E, "copper cable, active, limiting at the near end" },
   { 0x0F, "copper cable, active, linear" },
   { 0x10, "C-band tunable laser" },
   { 0x11, "L-band tunable laser" },
};

} // namespace

Code technologyCode( uint8_t number ) { return codeOf( number, technologies ); }

bool isCopper( const Code &technology ) {
   return technology.number >= 0x0A && technology.number <= 0x0F;
}

bool isPassiveCopper( const Code &technology ) {
   return technology.number == 0x0A || technology.number == 0x0B;
}

} // namespace Optics
