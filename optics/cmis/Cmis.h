// CMIS 5: QSFP-DD, OSFP, and QSFP with CMIS. Eight lanes: bank 0.
#pragma once

#include "optics/Half.h"
#include "optics/Parts.h"

namespace Optics::Cmis {

inline constexpr Region lower{ 0x50 };
inline constexpr Region page00{ 0x50, true, 0, 0x00 };
inline constexpr Region page01{ 0x50, true, 0, 0x01 };
inline constexpr Region page02{ 0x50, true, 0, 0x02 };
inline constexpr Region page10{ 0x50, true, 0, 0x10 };
inline constexpr Region page11{ 0x50, true, 0, 0x11 };
inline constexpr unsigned laneCount = 8;

// Lower byte 2. Nothing if it wasn't read.
std::optional<bool> isFlat( const Image &image );

std::vector<Part> parts( const Image &image );

void decodeIdentity( const Image &image, Module &module );
void decodeApplications( const Image &image, Module &module );
void decodeMonitors( const Image &image, Module &module );
void decodeStates( const Image &image, Module &module );

// Bit n is lane n + 1. Those of the fibre or cable; nothing while that isn't known.
std::optional<uint8_t> mediaLanes( const Image &image );
// Those of the host that an application uses.
uint8_t hostLanes( const Image &image );

} // namespace Optics::Cmis
