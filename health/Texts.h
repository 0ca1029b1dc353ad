#pragma once

#include <string>

namespace Health {

// "42 s", "3 min 5 s", "2 h 10 min", "3 d 4 h".
std::string durationText( double seconds );

// With four digits, as many as the chips' numbers have; whole from 1000 on.
std::string numberText( double number );

// "28.5 °C". A power of light is in dBm, too: "0.5 mW (-3.01 dBm)".
std::string quantityText( double number, const std::string &unit );

} // namespace Health
