// What ethtool says of extended compliance codes.
#include "Comparison.h"

namespace OpticsTest {

std::optional<unsigned> extendedComplianceOf( const std::string &ethtools ) {
   static const std::map<std::string, unsigned> all{
      { "100G AOC or 25GAUI C2M AOC with worst BER of 5x10^(-5)", 0x01 },
      { "100G Ethernet: 100G AOC or 25GAUI C2M AOC with worst BER of 5x10^(-5)", 0x01 },
      { "100G Base-SR4 or 25GBase-SR", 0x02 },
      { "100G Ethernet: 100G Base-SR4 or 25GBase-SR", 0x02 },
      { "100G Base-LR4 or 25GBase-LR", 0x03 },
      { "100G Ethernet: 100G Base-LR4", 0x03 },
      { "100G Base-ER4 or 25GBase-ER", 0x04 },
      { "100G Ethernet: 100G Base-ER4", 0x04 },
      { "100G Ethernet: 100G Base-SR10", 0x05 },
      { "100G Ethernet: 100G CWDM4 MSA with FEC", 0x06 },
      { "100G Ethernet: 100G PSM4 Parallel SMF", 0x07 },
      { "100G ACC or 25GAUI C2M ACC with worst BER of 5x10^(-5)", 0x08 },
      { "100G Ethernet: 100G ACC or 25GAUI C2M ACC with worst BER of 5x10^(-5)", 0x08 },
      { "100G Ethernet: 100G CWDM4 MSA without FEC", 0x09 },
      { "100G Base-CR4 or 25G Base-CR CA-L", 0x0B },
      { "100G Ethernet: 100G Base-CR4 or 25G Base-CR CA-L", 0x0B },
      { "25G Base-CR CA-S", 0x0C },
      { "25G Ethernet: 25G Base-CR CA-S", 0x0C },
      { "25G Base-CR CA-N", 0x0D },
      { "25G Ethernet: 25G Base-CR CA-N", 0x0D },
      { "40G Ethernet: 40G Base-ER4", 0x10 },
      { "4x10G Ethernet: 10G Base-SR", 0x11 },
      { "40G Ethernet: 40G PSM4 Parallel SMF", 0x12 },
      { "Ethernet: G959.1 profile P1I1-2D1 (10709 MBd, 2km, 1310nm SM)", 0x13 },
      { "Ethernet: G959.1 profile P1S1-2D2 (10709 MBd, 40km, 1550nm SM)", 0x14 },
      { "Ethernet: G959.1 profile P1L1-2D2 (10709 MBd, 80km, 1550nm SM)", 0x15 },
      { "10Gbase-T with SFI electrical interface", 0x16 },
      { "10G Ethernet: 10G Base-T with SFI electrical interface", 0x16 },
      { "100G Ethernet: 100G CLR4", 0x17 },
      { "100G AOC or 25GAUI C2M AOC with worst BER of 10^(-12)", 0x18 },
      { "100G Ethernet: 100G AOC or 25GAUI C2M AOC with worst BER of 10^(-12)", 0x18 },
      { "100G ACC or 25GAUI C2M ACC with worst BER of 10^(-12)", 0x19 },
      { "100G Ethernet: 100G ACC or 25GAUI C2M ACC with worst BER of 10^(-12)", 0x19 },
      { "100GE-DWDM2 (DWDM transceiver using 2 wavelengths on a 1550 nm DWDM grid with a reach up "
        "to 80 km)",
        0x1A },
      { "100G 1550nm WDM (4 wavelengths)", 0x1B },
      { "10Gbase-T Short Reach", 0x1C },
      { "10GBASE-T Short Reach (30 meters)", 0x1C },
      { "5GBASE-T", 0x1D },
      { "2.5GBASE-T", 0x1E },
      { "40G SWDM4", 0x1F },
      { "100G SWDM4", 0x20 },
      { "100G PAM4 BiDi", 0x21 },
      { "4WDM-10 MSA (10km version of 100G CWDM4 with same RS(528,514) FEC in host system)", 0x22 },
      { "4WDM-20 MSA (20km version of 100GBASE-LR4 with RS(528,514) FEC in host system)", 0x23 },
      { "4WDM-40 MSA (40km reach with APD receiver and RS(528,514) FEC in host system)", 0x24 },
      { "100GBASE-DR (clause 140), CAUI-4 (no FEC)", 0x25 },
      { "100G-FR or 100GBASE-FR1 (clause 140), CAUI-4 (no FEC)", 0x26 },
      { "100G-LR or 100GBASE-LR1 (clause 140), CAUI-4 (no FEC)", 0x27 },
      { "Active Copper Cable with 50GAUI, 100GAUI-2 or 200GAUI-4 C2M. Providing a worst BER of "
        "10-6 or below",
        0x30 },
      { "Active Optical Cable with 50GAUI, 100GAUI-2 or 200GAUI-4 C2M. Providing a worst BER of "
        "10-6 or below",
        0x31 },
      { "Active Copper Cable with 50GAUI, 100GAUI-2 or 200GAUI-4 C2M. Providing a worst BER of "
        "2.6x10-4 for ACC, 10-5 for AUI, or below",
        0x32 },
      { "Active Optical Cable with 50GAUI, 100GAUI-2 or 200GAUI-4 C2M. Providing a worst BER of "
        "2.6x10-4 for ACC, 10-5 for AUI, or below",
        0x33 },
      { "50GBASE-CR, 100GBASE-CR2, or 200GBASE-CR4", 0x40 },
      { "50GBASE-SR, 100GBASE-SR2, or 200GBASE-SR4", 0x41 },
      { "50GBASE-FR or 200GBASE-DR4", 0x42 },
      { "200GBASE-FR4", 0x43 },
      { "200G 1550 nm PSM4", 0x44 },
      { "50GBASE-LR", 0x45 },
      { "200GBASE-LR4", 0x46 },
      { "64GFC EA", 0x50 },
      { "64GFC SW", 0x51 },
      { "64GFC LW", 0x52 },
      { "128GFC EA", 0x53 },
      { "128GFC SW", 0x54 },
      { "128GFC LW", 0x55 },
   };
   const auto found = all.find( ethtools );
   return found == all.end() ? std::nullopt : std::optional( found->second );
}

} // namespace OpticsTest
