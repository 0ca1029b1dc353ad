#include "optics/cmis/Options.h"

namespace Optics::Cmis {

namespace {

// CMIS, page 01h.
constexpr NamedBit options[] = {
   { 142, 6, "versatile diagnostics (VDM)" },
   { 142, 5, "diagnostics pages 13h and 14h" },
   { 142, 3, "page 05h" },
   { 142, 2, "page 03h" },
   { 145, 7, "cooled transmitter" },
   { 151, 7, "APD detector" },
   { 155, 7, "wavelength control" },
   { 155, 6, "tunable transmitter" },
   { 155, 3, "tx force squelch" },
   { 155, 2, "tx squelch disable" },
   { 155, 1, "tx disable" },
   { 155, 0, "tx polarity flip" },
   { 156, 2, "rx squelch disable" },
   { 156, 1, "rx output disable" },
   { 156, 0, "rx polarity flip" },
   { 157, 3, "tx equalizer fault flag" },
   { 157, 2, "tx loss of lock flag" },
   { 157, 1, "tx loss of signal flag" },
   { 157, 0, "tx fault flag" },
   { 158, 2, "rx loss of lock flag" },
   { 158, 1, "rx loss of signal flag" },
   { 161, 3, "tx adaptive equalizer" },
   { 161, 2, "tx equalizer settings" },
   { 161, 1, "tx clock recovery can be switched" },
   { 161, 0, "tx clock recovery" },
   { 162, 2, "rx amplitude settings" },
   { 162, 1, "rx clock recovery can be switched" },
   { 162, 0, "rx clock recovery" },
};

} // namespace

void addOptions( const Half &advertised, Module &module ) {
   addNamesOfSetBits( module.options, advertised, options );
   if ( advertised.bits( 163, 7, 6 ).value_or( 0 ) != 0 )
      module.options.emplace_back( "command messages (CDB)" );
}

} // namespace Optics::Cmis
