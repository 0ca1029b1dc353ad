#include "optics/sff8472/Compliance.h"

namespace Optics::Sff8472 {

namespace {

// SFF-8472, A0h bytes 3 to 10.
constexpr NamedBit compliance[] = {
   { 3, 7, "10GBASE-ER" },
   { 3, 6, "10GBASE-LRM" },
   { 3, 5, "10GBASE-LR" },
   { 3, 4, "10GBASE-SR" },
   { 3, 3, "InfiniBand 1X SX" },
   { 3, 2, "InfiniBand 1X LX" },
   { 3, 1, "InfiniBand 1X copper active" },
   { 3, 0, "InfiniBand 1X copper passive" },
   { 4, 7, "ESCON MMF LED" },
   { 4, 6, "ESCON SMF laser" },
   { 4, 5, "OC-192 short reach" },
   { 4, 4, "SONET reach bit 1" },
   { 4, 3, "SONET reach bit 2" },
   { 4, 2, "OC-48 long reach" },
   { 4, 1, "OC-48 intermediate reach" },
   { 4, 0, "OC-48 short reach" },
   { 5, 6, "OC-12 single mode long reach" },
   { 5, 5, "OC-12 single mode intermediate reach" },
   { 5, 4, "OC-12 short reach" },
   { 5, 2, "OC-3 single mode long reach" },
   { 5, 1, "OC-3 single mode intermediate reach" },
   { 5, 0, "OC-3 short reach" },
   { 6, 7, "BASE-PX" },
   { 6, 6, "BASE-BX10" },
   { 6, 5, "100BASE-FX" },
   { 6, 4, "100BASE-LX/LX10" },
   { 6, 3, "1000BASE-T" },
   { 6, 2, "1000BASE-CX" },
   { 6, 1, "1000BASE-LX" },
   { 6, 0, "1000BASE-SX" },
   { 7, 7, "FC very long distance" },
   { 7, 6, "FC short distance" },
   { 7, 5, "FC intermediate distance" },
   { 7, 4, "FC long distance" },
   { 7, 3, "FC medium distance" },
   { 7, 2, "FC shortwave laser, linear receiver (SA)" },
   { 7, 1, "FC longwave laser (LC)" },
   { 7, 0, "FC electrical inter-enclosure (EL)" },
   { 8, 7, "FC electrical intra-enclosure (EL)" },
   { 8, 6, "FC shortwave laser without OFC (SN)" },
   { 8, 5, "FC shortwave laser with OFC (SL)" },
   { 8, 4, "FC longwave laser (LL)" },
   { 8, 3, "active cable" },
   { 8, 2, "passive cable" },
   { 9, 7, "FC twin axial pair (TW)" },
   { 9, 6, "FC twisted pair (TP)" },
   { 9, 5, "FC miniature coax (MI)" },
   { 9, 4, "FC video coax (TV)" },
   { 9, 3, "FC multimode 62.5 um (M6)" },
   { 9, 2, "FC multimode 50 um (M5)" },
   { 9, 0, "FC single mode (SM)" },
   { 10, 7, "FC 1200 MB/s" },
   { 10, 6, "FC 800 MB/s" },
   { 10, 5, "FC 1600 MB/s" },
   { 10, 4, "FC 400 MB/s" },
   { 10, 3, "FC 3200 MB/s" },
   { 10, 2, "FC 200 MB/s" },
   { 10, 0, "FC 100 MB/s" },
};

// SFF-8472, A0h bytes 64 and 65, and the enhanced options, byte 93. The power levels are a number.
constexpr NamedBit options[] = {
   { 64, 4, "pages at A2h" },
   { 64, 3, "clock recovery" },
   { 64, 2, "cooled transmitter" },
   { 64, 0, "linear receiver output" },
   { 65, 7, "receiver decision threshold" },
   { 65, 6, "tunable transmitter" },
   { 65, 5, "rate select" },
   { 65, 4, "tx disable" },
   { 65, 3, "tx fault" },
   { 65, 2, "rx loss of signal, inverted" },
   { 65, 1, "rx loss of signal" },
   { 93, 7, "alarm and warning flags" },
   { 93, 6, "soft tx disable" },
   { 93, 5, "soft tx fault" },
   { 93, 4, "soft rx loss of signal" },
   { 93, 3, "soft rate select" },
   { 93, 2, "application select" },
   { 93, 1, "soft rate select of SFF-8431" },
};

constexpr NamedBit cableBits[] = {
   { 60, 0, "SFF-8431 appendix E" },
   { 60, 1, "FC-PI-4 appendix H" },
   { 60, 2, "SFF-8431 limiting" },
   { 60, 3, "FC-PI-4 limiting" },
};

// SFF-8472, A0h byte 13.
constexpr NamedNumber rateIdentifiers[] = {
   { 0x00, "unspecified" },
   { 0x01, "SFF-8079, 4/2/1G" },
   { 0x02, "SFF-8431, 8/4/2G, receiver only" },
   { 0x04, "SFF-8431, 8/4/2G, transmitter only" },
   { 0x06, "SFF-8431, 8/4/2G, receiver and transmitter" },
   { 0x08, "FC-PI-5, 16/8/4G, receiver only" },
   { 0x0A, "FC-PI-5, 16/8/4G, receiver and transmitter" },
   { 0x0C, "FC-PI-6, 32/16/8G, receiver and transmitter" },
   { 0x0E, "10/8G, receiver and transmitter, internal retimer" },
   { 0x10, "FC-PI-7, 64/32/16G, receiver and transmitter" },
   { 0x20, "by the extended compliance code" },
};

} // namespace

std::span<const NamedBit> complianceBits() { return compliance; }
std::span<const NamedBit> optionBits() { return options; }
std::span<const NamedBit> passiveCableBits() { return std::span( cableBits ).first( 2 ); }
std::span<const NamedBit> activeCableBits() { return cableBits; }
Code rateIdentifierCode( uint8_t number ) { return codeOf( number, rateIdentifiers ); }

} // namespace Optics::Sff8472
