// SFF-8472: SFP, SFP+ and SFP28. The identity is at A0h, the diagnostics are at A2h.
#pragma once

#include "optics/Half.h"
#include "optics/Parts.h"

namespace Optics::Sff8472 {

inline constexpr Region a0{ 0x50 };
inline constexpr Region a2{ 0x51 };

// Byte 92. Nothing if it wasn't read.
std::optional<bool> hasDiagnostics( const Image &image );
bool needsAddressChange( const Image &image ); // they are there, and can't be read

std::vector<Part> parts( const Image &image );

void decodeIdentity( const Image &image, Module &module );
void decodeDiagnostics( const Image &image, Module &module );

} // namespace Optics::Sff8472
