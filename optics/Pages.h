#pragma once

#include "optics/Image.h"

namespace Optics {

// Whether the bytes from 128 on belong to a page that is chosen at the bytes 126 and 127. Needs the
// first bytes of the lower half.
bool hasPages( const Image &image );

} // namespace Optics
