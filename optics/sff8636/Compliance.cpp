#include "optics/sff8636/Compliance.h"

namespace Optics::Sff8636 {

namespace {

// SFF-8636, page 00h bytes 131 to 138, and the InfiniBand rates, byte 164.
constexpr NamedBit compliance[] = {
   { 131, 6, "10GBASE-LRM" },
   { 131, 5, "10GBASE-LR" },
   { 131, 4, "10GBASE-SR" },
   { 131, 3, "40GBASE-CR4" },
   { 131, 2, "40GBASE-SR4" },
   { 131, 1, "40GBASE-LR4" },
   { 131, 0, "40G active cable (XLPPI)" },
   { 132, 2, "OC-48 long reach" },
   { 132, 1, "OC-48 intermediate reach" },
   { 132, 0, "OC-48 short reach" },
   { 133, 7, "SAS 24 Gb/s" },
   { 133, 6, "SAS 12 Gb/s" },
   { 133, 5, "SAS 6 Gb/s" },
   { 133, 4, "SAS 3 Gb/s" },
   { 134, 3, "1000BASE-T" },
   { 134, 2, "1000BASE-CX" },
   { 134, 1, "1000BASE-LX" },
   { 134, 0, "1000BASE-SX" },
   { 135, 7, "FC very long distance" },
   { 135, 6, "FC short distance" },
   { 135, 5, "FC intermediate distance" },
   { 135, 4, "FC long distance" },
   { 135, 3, "FC medium distance" },
   { 135, 2, "FC shortwave laser, linear receiver (SA)" },
   { 135, 1, "FC longwave laser (LC)" },
   { 135, 0, "FC electrical inter-enclosure (EL)" },
   { 136, 7, "FC electrical intra-enclosure (EL)" },
   { 136, 6, "FC shortwave laser without OFC (SN)" },
   { 136, 5, "FC shortwave laser with OFC (SL)" },
   { 136, 4, "FC longwave laser (LL)" },
   { 137, 7, "FC twin axial pair (TW)" },
   { 137, 6, "FC twisted pair (TP)" },
   { 137, 5, "FC miniature coax (MI)" },
   { 137, 4, "FC video coax (TV)" },
   { 137, 3, "FC multimode 62.5 um (M6)" },
   { 137, 2, "FC multimode 50 um (M5)" },
   { 137, 1, "FC multimode 50 um (OM3)" },
   { 137, 0, "FC single mode (SM)" },
   { 138, 7, "FC 1200 MB/s" },
   { 138, 6, "FC 800 MB/s" },
   { 138, 5, "FC 1600 MB/s" },
   { 138, 4, "FC 400 MB/s" },
   { 138, 3, "FC 3200 MB/s" },
   { 138, 2, "FC 200 MB/s" },
   { 138, 0, "FC 100 MB/s" },
   { 164, 5, "InfiniBand HDR" },
   { 164, 4, "InfiniBand EDR" },
   { 164, 3, "InfiniBand FDR" },
   { 164, 2, "InfiniBand QDR" },
   { 164, 1, "InfiniBand DDR" },
   { 164, 0, "InfiniBand SDR" },
};

// SFF-8636, page 00h: extended identifier 129, device technology 147, options 193 to 195, enhanced
// options 221. What the monitors and flags need of them shows in these.
constexpr NamedBit options[] = {
   { 129, 3, "tx clock recovery" },
   { 129, 2, "rx clock recovery" },
   { 147, 3, "wavelength control" },
   { 147, 2, "cooled transmitter" },
   { 147, 1, "APD detector" },
   { 147, 0, "tunable transmitter" },
   { 193, 6, "configurable LPMode pin" },
   { 193, 5, "configurable IntL pin" },
   { 193, 4, "tx equalizer freeze" },
   { 193, 3, "tx adaptive equalizer" },
   { 193, 2, "tx equalizer settings" },
   { 193, 1, "rx emphasis settings" },
   { 193, 0, "rx amplitude settings" },
   { 194, 7, "tx clock recovery can be switched" },
   { 194, 6, "rx clock recovery can be switched" },
   { 194, 5, "tx loss of lock flag" },
   { 194, 4, "rx loss of lock flag" },
   { 194, 3, "rx squelch disable" },
   { 194, 2, "rx output disable" },
   { 194, 1, "tx squelch disable" },
   { 194, 0, "tx squelch" },
   { 195, 7, "page 02h" },
   { 195, 6, "page 01h" },
   { 195, 5, "rate select" },
   { 195, 4, "tx disable" },
   { 195, 3, "tx fault flag" },
   { 195, 2, "squelch reduces the average power" },
   { 195, 1, "tx loss of signal flag" },
   { 195, 0, "pages 20h and 21h" },
   { 221, 4, "initialization complete flag" },
   { 221, 3, "extended rate selection" },
   { 221, 1, "TC readiness flag" },
   { 221, 0, "software reset" },
};

} // namespace

std::span<const NamedBit> complianceBits() { return compliance; }
std::span<const NamedBit> optionBits() { return options; }

} // namespace Optics::Sff8636
