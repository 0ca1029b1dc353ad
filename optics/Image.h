// What has been read of a module's memory.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace Optics {

// Half of a memory of 256 bytes: the bytes 0 to 127, or one of the pages that a module shows at 128
// to 255. An SFP has two memories, at the addresses 0x50 (A0h) and 0x51 (A2h); its upper halves are
// page 0. A QSFP has one, with bank and page chosen at the bytes 126 and 127.
struct Region {
   uint8_t address = 0x50;
   bool upper = false;
   uint8_t bank = 0;
   uint8_t page = 0;

   auto operator<=>( const Region & ) const = default;
};

// Bytes to read in one piece. Numbers are those of the standards: 128 to 255 in an upper half.
struct Block {
   Region region;
   unsigned first = 0;
   unsigned size = 0;

   bool operator==( const Block & ) const = default;
};

class Image {
 public:
   // Bytes that were read and stand one behind the other.
   struct Run {
      Region region{};
      unsigned first = 0;
      std::vector<uint8_t> bytes{};
   };

   // Throws std::out_of_range for bytes that aren't in the region.
   void put( const Region &region, unsigned first, std::span<const uint8_t> bytes );
   // Nothing where it wasn't read.
   std::optional<uint8_t> byte( const Region &region, unsigned number ) const;
   // All of it was read.
   bool has( const Block &block ) const;

   // All that was read, region by region.
   std::vector<Run> runs() const;

   using Bytes = std::array<std::optional<uint8_t>, 128>;
   const std::map<Region, Bytes> &regions() const { return regions_; }

 private:
   std::map<Region, Bytes> regions_;
};

} // namespace Optics
