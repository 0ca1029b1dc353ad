#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Bus {

// The kinds of bus masters, numbered as in the messages.
enum class Master : uint8_t { Simulated = 0, I2c = 1, Scd = 2, IoPort = 3, Celestica = 4 };

// A request has seven bits for each of address, bus and accelerator.
constexpr uint32_t maxId = 0x7F;
constexpr uint32_t maxAddress = 0x7F;

// One bus of a master. A transaction occupies it. Make it with rootBusId().
struct RootBusId {
   Master master = Master::Simulated;
   uint32_t pci = 0;
   uint32_t accelerator = 0;
   uint32_t bus = 0;

   friend auto operator<=>( const RootBusId &, const RootBusId & ) = default;
};

// Adapters, I/O ports and simulated busses have neither PCI device nor accelerator; the client's
// values for these are ignored.
RootBusId rootBusId( Master master, uint32_t pci, uint32_t accelerator, uint32_t bus );

// For people: sim:0, i2c:0, scd(4):1:2, ioport:0, celestica:1:2.
std::string toString( const RootBusId & );

// The reverse of toString; numbers are decimal or have 0x. Returns nothing when the text has
// another form, or a number is out of range (accelerator and bus: 7 bits).
std::optional<RootBusId> parseRootBusId( std::string_view text );

// A whole number from 0 to max, decimal or with 0x.
std::optional<uint32_t> parseNumber( std::string_view text, uint32_t max );

} // namespace Bus
