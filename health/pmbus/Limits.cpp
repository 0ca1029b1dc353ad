#include "health/pmbus/Limits.h"

#include "health/pmbus/Formats.h"

#include <array>
#include <optional>
#include <string_view>

namespace Health::Pmbus {

namespace {

struct Row {
   uint8_t command;
   std::string_view quantity;
   bool isHigh;
   Level level;
   std::string_view unit;
};

constexpr std::array rows{
   Row{ 0x40, "output_voltage", true, Level::Critical, "V" },  // VOUT_OV_FAULT_LIMIT
   Row{ 0x42, "output_voltage", true, Level::Warning, "V" },   // VOUT_OV_WARN_LIMIT
   Row{ 0x43, "output_voltage", false, Level::Warning, "V" },  // VOUT_UV_WARN_LIMIT
   Row{ 0x44, "output_voltage", false, Level::Critical, "V" }, // VOUT_UV_FAULT_LIMIT
   Row{ 0x46, "output_current", true, Level::Critical, "A" },  // IOUT_OC_FAULT_LIMIT
   Row{ 0x4A, "output_current", true, Level::Warning, "A" },   // IOUT_OC_WARN_LIMIT
   Row{ 0x4F, "temperature", true, Level::Critical, "°C" },    // OT_FAULT_LIMIT
   Row{ 0x51, "temperature", true, Level::Warning, "°C" },     // OT_WARN_LIMIT
   Row{ 0x55, "input_voltage", true, Level::Critical, "V" },   // VIN_OV_FAULT_LIMIT
   Row{ 0x57, "input_voltage", true, Level::Warning, "V" },    // VIN_OV_WARN_LIMIT
   Row{ 0x58, "input_voltage", false, Level::Warning, "V" },   // VIN_UV_WARN_LIMIT
   Row{ 0x59, "input_voltage", false, Level::Critical, "V" },  // VIN_UV_FAULT_LIMIT
   Row{ 0x6A, "output_power", true, Level::Warning, "W" },     // POUT_OP_WARN_LIMIT
   Row{ 0x6B, "input_power", true, Level::Warning, "W" },      // PIN_OP_WARN_LIMIT
};

std::optional<double> valueOf( const Row &row, uint16_t word, const Registers &registers ) {
   if ( row.quantity != "output_voltage" )
      return linear11( word );
   const auto mode = registers.find( VoutMode );
   if ( mode == registers.end() )
      return {};
   return ulinear16( word, static_cast<uint8_t>( mode->second ) );
}

} // namespace

const std::vector<uint8_t> &limitCommands() {
   static const std::vector<uint8_t> commands = [] {
      std::vector<uint8_t> all;
      for ( const Row &row : rows )
         all.push_back( row.command );
      return all;
   }();
   return commands;
}

std::vector<Limit> limitsIn( const Registers &registers ) {
   std::vector<Limit> limits;
   for ( const Row &row : rows ) {
      const auto word = registers.find( row.command );
      if ( word == registers.end() )
         continue;
      if ( const auto number = valueOf( row, word->second, registers ) )
         limits.push_back( { std::string( row.quantity ), row.isHigh, row.level, *number,
                             std::string( row.unit ) } );
   }
   return limits;
}

} // namespace Health::Pmbus
