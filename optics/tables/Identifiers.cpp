// SFF-8024: what kind of module, and its connector.
#include "optics/Names.h"
#include "optics/tables/Tables.h"

namespace Optics {

namespace {

constexpr NamedNumber identifiers[] = {
   { 0x00, "unknown" },
   { 0x01, "GBIC" },
   { 0x02, "soldered to the board" },
   { 0x03, "SFP/SFP+/SFP28" },
   { 0x04, "300-pin XBI" },
   { 0x05, "XENPAK" },
   { 0x06, "XFP" },
   { 0x07, "XFF" },
   { 0x08, "XFP-E" },
   { 0x09, "XPAK" },
   { 0x0A, "X2" },
   { 0x0B, "DWDM-SFP" },
   { 0x0C, "QSFP" },
   { 0x0D, "QSFP+" },
   { 0x0E, "CXP" },
   { 0x0F, "mini multilane HD 4X" },
   { 0x10, "mini multilane HD 8X" },
   { 0x11, "QSFP28" },
   { 0x12, "CXP2" },
   { 0x13, "CDFP style 1 or 2" },
   { 0x14, "HD 4X fanout cable" },
   { 0x15, "HD 8X fanout cable" },
   { 0x16, "CDFP style 3" },
   { 0x17, "microQSFP" },
   { 0x18, "QSFP-DD" },
   { 0x19, "OSFP" },
   { 0x1A, "SFP-DD" },
   { 0x1B, "DSFP" },
   { 0x1C, "MiniLink x4" },
   { 0x1D, "MiniLink x8" },
   { 0x1E, "QSFP+ or later with CMIS" },
   { 0x1F, "SFP-DD with CMIS" },
   { 0x20, "SFP+ with CMIS" },
   { 0x21, "OSFP-XD with CMIS" },
   { 0x22, "ELSFP" },
   { 0x23, "CDFP x4" },
   { 0x24, "CDFP x8" },
   { 0x25, "CDFP x16" },
};

constexpr NamedNumber connectors[] = {
   { 0x00, "unknown" },
   { 0x01, "SC" },
   { 0x02, "Fibre Channel style 1 copper" },
   { 0x03, "Fibre Channel style 2 copper" },
   { 0x04, "BNC/TNC" },
   { 0x05, "Fibre Channel coax" },
   { 0x06, "Fiber Jack" },
   { 0x07, "LC" },
   { 0x08, "MT-RJ" },
   { 0x09, "MU" },
   { 0x0A, "SG" },
   { 0x0B, "optical pigtail" },
   { 0x0C, "MPO 1x12" },
   { 0x0D, "MPO 2x16" },
   { 0x20, "HSSDC II" },
   { 0x21, "copper pigtail" },
   { 0x22, "RJ45" },
   { 0x23, "no separable connector" },
   { 0x24, "MXC 2x16" },
   { 0x25, "CS" },
   { 0x26, "SN" },
   { 0x27, "MPO 2x12" },
   { 0x28, "MPO 1x16" },
};

} // namespace

Code identifierCode( uint8_t number ) { return codeOf( number, identifiers, 0x80 ); }
Code connectorCode( uint8_t number ) { return codeOf( number, connectors, 0x80 ); }

} // namespace Optics
