#pragma once

#include <string>
#include <string_view>

namespace Http {

// The text with U+FFFD in place of each byte that is no UTF-8: who reads JSON refuses all of a text
// with such a byte.
std::string withoutOtherBytes( std::string_view text );

} // namespace Http
