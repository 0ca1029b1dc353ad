// SFF-8024: encodings, in two columns of which the codes 4 to 6 differ.
#include "optics/Names.h"
#include "optics/tables/Tables.h"

namespace Optics {

namespace {

constexpr NamedNumber encodings[] = {
   { 0x00, "unspecified" }, { 0x01, "8B/10B" },    { 0x02, "4B/5B" },
   { 0x03, "NRZ" },         { 0x07, "256B/257B" }, { 0x08, "PAM4" },
};
constexpr const char *manchester = "Manchester";
constexpr const char *scrambled = "SONET scrambled";
constexpr const char *blocks64 = "64B/66B";

} // namespace

Code encodingOfSff8472( uint8_t number ) {
   switch ( number ) {
   case 4:
      return { number, manchester };
   case 5:
      return { number, scrambled };
   case 6:
      return { number, blocks64 };
   default:
      return codeOf( number, encodings );
   }
}

Code encodingOfSff8636( uint8_t number ) {
   switch ( number ) {
   case 4:
      return { number, scrambled };
   case 5:
      return { number, blocks64 };
   case 6:
      return { number, manchester };
   default:
      return codeOf( number, encodings );
   }
}

} // namespace Optics
