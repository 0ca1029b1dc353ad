#pragma once

#include "health/pmbus/Conditions.h"

#include <cstdint>
#include <span>
#include <string_view>

// The bits of the status registers, by their PMBus names.
namespace Health::Pmbus {

// A bit of STATUS_WORD.
struct SummaryBit {
   uint16_t mask;
   std::string_view name;
   uint8_t detail; // the register that says more; 0: none that is read
   Condition::Kind kind;
   Level level;
   std::string_view words;
};

// A bit of the register `command`.
struct DetailBit {
   uint8_t command;
   uint8_t mask;
   std::string_view name;
   Condition::Kind kind;
   Level level;
   std::string_view words;
};

// These two follow the present.
inline constexpr uint16_t offBit = 0x0040;
inline constexpr uint16_t powerNotGoodBit = 0x0800;

std::span<const SummaryBit> summaryBits();
std::span<const DetailBit> detailBits();

} // namespace Health::Pmbus
