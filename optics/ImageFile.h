// A module's memory in a file of plain bytes.
//
// SFF-8472: A0h, 256 bytes, and then A2h, 256 bytes, if the module has it. SFF-8636 and CMIS: the
// lower half and page 00h, 256 bytes, and then, if the module has pages, 128 bytes of each of 01h,
// 02h, 03h (SFF-8636) or 01h, 02h, 10h, 11h of bank 0 (CMIS).
#pragma once

#include "optics/Image.h"
#include "optics/Module.h"

#include <vector>

namespace Optics {

// A file that is cut gives an image that is cut. Without a standard the first byte tells it; throws
// std::runtime_error if it doesn't, or if the file is longer than the layout.
Image imageOfFile( std::span<const uint8_t> file, std::optional<Standard> standard );

// Up to the last region that was read. Bytes that weren't read are zero.
std::vector<uint8_t> fileOfImage( const Image &image, Standard standard );

} // namespace Optics
