#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Bus {

// What a multiplexer is set to.
struct Selection {
   uint8_t mux = 0;    // its address
   uint8_t select = 0; // the byte

   friend auto operator<=>( const Selection &, const Selection & ) = default;
};

// The way to a segment, the outermost multiplexer first; empty: the root bus itself.
using SegmentPath = std::vector<Selection>;

std::string toText( const SegmentPath &path ); // "0x70=1 0x71=4"

// The reverse of toText; numbers are decimal or have 0x. Both return nothing when the text has
// another form.
std::optional<Selection> parseSelection( std::string_view text );
std::optional<SegmentPath> parseSegmentPath( std::string_view text );

} // namespace Bus
