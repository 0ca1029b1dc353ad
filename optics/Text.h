// Texts of a module's memory.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace Optics {

// Without the padding behind it; "\xff" for what is no printable ASCII.
std::string escapedText( std::span<const uint8_t> bytes );

// "00:1b:21"; empty for all zero, which is none.
std::string ouiText( std::span<const uint8_t> bytes );

// "2024-02-02" of a date code "240202xx"; empty if it is no day.
std::string dateOf( const std::string &dateCode );
// The lot: what stands behind the day of such a date code.
std::string lotOf( const std::string &dateCode );

} // namespace Optics
