// SFF-8024: electrical interfaces of CMIS applications, those in use.
#include "optics/Names.h"
#include "optics/tables/Tables.h"

namespace Optics {

namespace {

constexpr NamedNumber hostInterfaces[] = {
   { 0x00, "undefined" },
   { 0x04, "SFI" },
   { 0x05, "25GAUI C2M" },
   { 0x06, "XLAUI C2M" },
   { 0x07, "XLPPI" },
   { 0x0A, "50GAUI-1 C2M" },
   { 0x0B, "CAUI-4 C2M" },
   { 0x0C, "100GAUI-4 C2M" },
   { 0x0D, "100GAUI-2 C2M" },
   { 0x0E, "200GAUI-8 C2M" },
   { 0x0F, "200GAUI-4 C2M" },
   { 0x10, "400GAUI-16 C2M" },
   { 0x11, "400GAUI-8 C2M" },
   { 0x14, "25GBASE-CR CA-L" },
   { 0x15, "25GBASE-CR CA-S" },
   { 0x16, "25GBASE-CR CA-N" },
   { 0x17, "40GBASE-CR4" },
   { 0x18, "50GBASE-CR" },
   { 0x1A, "100GBASE-CR4" },
   { 0x1B, "100GBASE-CR2" },
   { 0x1C, "200GBASE-CR4" },
   { 0x1D, "400G CR8" },
   { 0x41, "CAUI-4 C2M without FEC" },
   { 0x42, "CAUI-4 C2M with RS FEC" },
   { 0x46, "100GBASE-CR1" },
   { 0x47, "200GBASE-CR2" },
   { 0x48, "400GBASE-CR4" },
   { 0x49, "800G-ETC-CR8" },
   { 0x4B, "100GAUI-1-S C2M" },
   { 0x4C, "100GAUI-1-L C2M" },
   { 0x4D, "200GAUI-2-S C2M" },
   { 0x4E, "200GAUI-2-L C2M" },
   { 0x4F, "400GAUI-4-S C2M" },
   { 0x50, "400GAUI-4-L C2M" },
   { 0x51, "800GAUI-8-S C2M" },
   { 0x52, "800GAUI-8-L C2M" },
   { 0x80, "200GAUI-1" },
   { 0x81, "400GAUI-2" },
   { 0x82, "800GAUI-4" },
   { 0x83, "1.6TAUI-8" },
};

} // namespace

Code hostInterfaceCode( uint8_t number ) { return codeOf( number, hostInterfaces ); }

} // namespace Optics
