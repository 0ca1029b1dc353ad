// SFF-8024: media types and media interfaces of CMIS applications, those in use.
#include "optics/Names.h"
#include "optics/tables/Tables.h"

namespace Optics {

namespace {

constexpr NamedNumber mediaTypes[] = {
   { 0, "undefined" },      { 1, "multimode fibre" }, { 2, "single mode fibre" },
   { 3, "passive copper" }, { 4, "active cable" },    { 5, "BASE-T" },
};

constexpr NamedNumber multimode[] = {
   { 0x00, "undefined" },      { 0x02, "10GBASE-SR" },     { 0x03, "25GBASE-SR" },
   { 0x04, "40GBASE-SR4" },    { 0x07, "50GBASE-SR" },     { 0x09, "100GBASE-SR4" },
   { 0x0B, "100G PAM4 BiDi" }, { 0x0C, "100GBASE-SR2" },   { 0x0D, "100GBASE-SR1" },
   { 0x0E, "200GBASE-SR4" },   { 0x10, "400GBASE-SR8" },   { 0x11, "400GBASE-SR4" },
   { 0x12, "800GBASE-SR8" },   { 0x1A, "400GBASE-SR4.2" }, { 0x1B, "200GBASE-SR2" },
   { 0x1D, "100GBASE-VR1" },   { 0x1E, "200GBASE-VR2" },   { 0x1F, "400GBASE-VR4" },
   { 0x20, "800GBASE-VR8" },
};

constexpr NamedNumber singleMode[] = {
   { 0x00, "undefined" },      { 0x04, "10GBASE-LR" },       { 0x05, "10GBASE-ER" },
   { 0x07, "25GBASE-LR" },     { 0x09, "40GBASE-LR4" },      { 0x0B, "50GBASE-FR" },
   { 0x0C, "50GBASE-LR" },     { 0x0D, "100GBASE-LR4" },     { 0x0E, "100GBASE-ER4" },
   { 0x0F, "100G PSM4" },      { 0x10, "100G CWDM4" },       { 0x14, "100GBASE-DR" },
   { 0x15, "100GBASE-FR1" },   { 0x16, "100GBASE-LR1" },     { 0x17, "200GBASE-DR4" },
   { 0x18, "200GBASE-FR4" },   { 0x19, "200GBASE-LR4" },     { 0x1A, "400GBASE-FR8" },
   { 0x1B, "400GBASE-LR8" },   { 0x1C, "400GBASE-DR4" },     { 0x1D, "400GBASE-FR4" },
   { 0x1E, "400G-LR4-10" },    { 0x3E, "400ZR, amplified" }, { 0x3F, "400ZR, unamplified" },
   { 0x43, "400GBASE-LR4-6" }, { 0x46, "ZR400-OFEC-16QAM" }, { 0x4D, "400GBASE-ZR" },
   { 0x55, "400GBASE-DR4-2" }, { 0x56, "800GBASE-DR8" },     { 0x57, "800GBASE-DR8-2" },
   { 0x77, "800GBASE-DR4" },   { 0x78, "800GBASE-DR4-2" },   { 0x79, "800GBASE-FR4-500" },
   { 0x7A, "800GBASE-FR4" },   { 0x7B, "800GBASE-LR4" },
};

constexpr NamedNumber passiveCopper[] = {
   { 0x00, "undefined" },
   { 0x01, "copper cable" },
   { 0xBF, "passive loopback" },
};

constexpr NamedNumber activeCable[] = {
   { 0x00, "undefined" },
   { 0x01, "active cable, BER < 1e-12" },
   { 0x02, "active cable, BER < 5e-5" },
   { 0x03, "active cable, BER < 2.6e-4" },
   { 0x04, "active cable, BER < 1e-6" },
   { 0xBF, "active loopback" },
};

constexpr NamedNumber baseT[] = {
   { 0x00, "undefined" }, { 0x01, "1000BASE-T" }, { 0x02, "2.5GBASE-T" }, { 0x03, "5GBASE-T" },
   { 0x04, "10GBASE-T" }, { 0x05, "25GBASE-T" },  { 0x06, "40GBASE-T" },
};

std::span<const NamedNumber> interfacesOf( uint8_t mediaType ) {
   switch ( mediaType ) {
   case 1:
      return multimode;
   case 2:
      return singleMode;
   case 3:
      return passiveCopper;
   case 4:
      return activeCable;
   case 5:
      return baseT;
   default:
      return {};
   }
}

} // namespace

Code mediaTypeCode( uint8_t number ) {
   // 40h to 8Fh are custom.
   return codeOf( number, mediaTypes, number <= 0x8F ? 0x40 : 0x100 );
}

Code mediaInterfaceCode( uint8_t mediaType, uint8_t number ) {
   return codeOf( number, interfacesOf( mediaType ) );
}

} // namespace Optics
