// One half of a memory, with the numbers in it as all three standards write them: the high byte
// first. What wasn't read, or only in part, is nothing.
#pragma once

#include "optics/Image.h"
#include "optics/Module.h"

namespace Optics {

class Half {
 public:
   Half( const Image &image, const Region &region );

   std::optional<uint8_t> byte( unsigned number ) const;
   // The bits `high` to `low` as a number.
   std::optional<uint8_t> bits( unsigned number, unsigned high, unsigned low ) const;
   std::optional<bool> bit( unsigned number, unsigned bit ) const;
   std::optional<uint16_t> word( unsigned first ) const;
   std::optional<float> real( unsigned first ) const; // IEEE 754, single precision
   std::optional<std::vector<uint8_t>> bytes( unsigned first, unsigned size ) const;
   // Left aligned, padded with blanks or zeros; escaped. Empty if it wasn't all read.
   std::string text( unsigned first, unsigned size ) const;

 private:
   const Image::Bytes *bytes_; // of the image; null where nothing was read
   unsigned start_;            // the number of the first one
};

// "A0h", "the lower half", "page 03h".
std::string nameOf( const Region &region, Standard standard );

} // namespace Optics
