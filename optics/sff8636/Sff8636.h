// SFF-8636 and SFF-8436: QSFP+ and QSFP28.
#pragma once

#include "optics/Half.h"
#include "optics/Parts.h"

namespace Optics::Sff8636 {

inline constexpr Region lower{ 0x50 };
inline constexpr Region page00{ 0x50, true, 0, 0x00 };
inline constexpr Region page02{ 0x50, true, 0, 0x02 };
inline constexpr Region page03{ 0x50, true, 0, 0x03 };

// What the module measures; nothing while that isn't known.
struct Monitored {
   bool temperature = false, voltage = false, lanes = false, txPower = false;
};
std::optional<Monitored> monitored( const Image &image );

std::vector<Part> parts( const Image &image );

void decodeIdentity( const Image &image, Module &module );
void decodeDiagnostics( const Image &image, Module &module );

} // namespace Optics::Sff8636
