// External calibration once more, so that a word that we leave out is left out for a reason.
#pragma once

#include "tests/optics/Images.h"

namespace OpticsTest {

// The result is a number of counts that the unit has. `word` is its place at A2h.
bool canBe( const Bytes &file, Optics::Quantity quantity, size_t word );

// The counts of rx power with each constant times the word itself.
double withoutPowers( const Bytes &file, size_t word );

} // namespace OpticsTest
