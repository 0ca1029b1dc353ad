#pragma once

#include <string>

namespace Screen {

// For terminals that show ASCII alone: the same text, as wide, with a letter in place of each
// character that they don't have.
std::string toAscii( const std::string &text );

} // namespace Screen
