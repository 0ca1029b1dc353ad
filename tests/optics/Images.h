// Memories of made-up modules, as files, with right checksums. No two neighbouring readings are
// equal.
#pragma once

#include "optics/Decode.h"
#include "optics/ImageFile.h"

#include <string>

namespace OpticsTest {

using Bytes = std::vector<uint8_t>;

// An SFP+ of 10GBASE-LR with diagnostics, internally calibrated. A0h is at 0, A2h at `a2`.
Bytes sfp();
inline constexpr size_t a2 = 256;

// A QSFP28 of 100GBASE-LR4 with pages 01h to 03h. Lower half and page 00h are at their numbers.
Bytes qsfp();
inline constexpr size_t page02OfQsfp = 256; // to add to a byte's number
inline constexpr size_t page03OfQsfp = 384;

// A QSFP-DD of 400GBASE-DR4 with pages 01h, 02h, 10h, 11h: eight lanes to the host, four of fibre.
Bytes qsfpDd();
inline constexpr size_t page01OfCmis = 128;
inline constexpr size_t page02OfCmis = 256;
inline constexpr size_t page10OfCmis = 384;
inline constexpr size_t page11OfCmis = 512;

void put( Bytes &file, size_t place, const Bytes &bytes );
void putText( Bytes &file, size_t place, size_t size, const std::string &text );
// Puts right all checksums of a file.
void sign( Bytes &file, Optics::Standard standard );

// Signed, and decoded by the standard of byte 0.
Optics::Module decoded( Bytes file );

const Optics::Monitor *monitorOf( const Optics::Module &module, Optics::Quantity quantity,
                                  unsigned lane = 0 );
// Nothing if it isn't there, or has no value.
std::optional<double> valueOf( const Optics::Module &module, Optics::Quantity quantity,
                               unsigned lane = 0 );

} // namespace OpticsTest
