// From a module's bytes to what they mean.
#pragma once

#include "optics/Image.h"
#include "optics/Module.h"

namespace Optics {

// By the identifier, byte 0 of the lower half. Nothing if it wasn't read, or is none of these.
std::optional<Standard> standardOf( const Image &image );

// Whatever the bytes are: what wasn't read, or can't be, is absent, and a finding tells it.
Module decode( const Image &image, Standard standard );

// A power in dBm; nothing for no light.
std::optional<double> dBm( double milliwatts );

const char *nameOf( Standard standard ); // "SFF-8472"
const char *nameOf( Quantity quantity ); // "temperature", "rx power"

} // namespace Optics
