#include "health/pmbus/Bits.h"

#include <array>

namespace Health::Pmbus {

namespace {

using enum Condition::Kind;
constexpr auto ok = Level::Ok;
constexpr auto warning = Level::Warning;
constexpr auto critical = Level::Critical;

// A special bit is in front of the general one of the same register. OFF and POWER_GOOD# are last:
// they are told where nothing else says why. NONE OF THE ABOVE, bit 0, says that a register tells
// what no bit of the low byte does, and adds nothing to it.
constexpr std::array summaries{
   SummaryBit{ 0x0008, "VIN_UV_FAULT", StatusInput, InputLost, critical, "input undervoltage" },
   SummaryBit{ 0x2000, "INPUT", StatusInput, Other, warning, "input fault or warning" },
   SummaryBit{ 0x0020, "VOUT_OV_FAULT", StatusVout, OutputFailed, critical, "output overvoltage" },
   SummaryBit{ 0x8000, "VOUT", StatusVout, Other, warning, "output voltage fault or warning" },
   SummaryBit{ 0x0010, "IOUT_OC_FAULT", StatusIout, OutputFailed, critical, "output overcurrent" },
   SummaryBit{ 0x4000, "IOUT/POUT", StatusIout, Other, warning,
               "output current or power fault or warning" },
   SummaryBit{ 0x0400, "FANS", StatusFans12, FanFailed, warning, "fan fault or warning" },
   SummaryBit{ 0x0004, "TEMPERATURE", StatusTemperature, OverTemperature, warning,
               "temperature fault or warning" },
   SummaryBit{ 0x0002, "CML", StatusCml, Communication, ok,
               "communication, memory or logic fault" },
   SummaryBit{ 0x1000, "MFR_SPECIFIC", 0, Other, warning, "fault or warning of its maker" },
   SummaryBit{ 0x0200, "OTHER", 0, Other, warning, "another fault or warning" },
   SummaryBit{ 0x0100, "UNKNOWN", 0, Other, warning, "unknown fault or warning" },
   SummaryBit{ 0x0080, "BUSY", 0, Other, ok, "too busy to respond" },
   SummaryBit{ offBit, "OFF", 0, OutputFailed, critical, "output is off" },
   SummaryBit{ powerNotGoodBit, "POWER_GOOD#", 0, OutputFailed, critical,
               "output power is not good" },
};

constexpr std::array details{
   DetailBit{ StatusInput, 0x80, "VIN_OV_FAULT", Other, critical, "input overvoltage" },
   DetailBit{ StatusInput, 0x40, "VIN_OV_WARNING", Other, warning, "input voltage is high" },
   DetailBit{ StatusInput, 0x20, "VIN_UV_WARNING", Other, warning, "input voltage is low" },
   DetailBit{ StatusInput, 0x10, "VIN_UV_FAULT", InputLost, critical, "input undervoltage" },
   DetailBit{ StatusInput, 0x08, "UNIT_OFF_FOR_LOW_INPUT_VOLTAGE", InputLost, critical,
              "unit off for insufficient input voltage" },
   DetailBit{ StatusInput, 0x04, "IIN_OC_FAULT", Other, critical, "input overcurrent" },
   DetailBit{ StatusInput, 0x02, "IIN_OC_WARNING", Other, warning, "input current is high" },
   DetailBit{ StatusInput, 0x01, "PIN_OP_WARNING", Other, warning, "input power is high" },

   DetailBit{ StatusVout, 0x80, "VOUT_OV_FAULT", OutputFailed, critical, "output overvoltage" },
   DetailBit{ StatusVout, 0x40, "VOUT_OV_WARNING", Other, warning, "output voltage is high" },
   DetailBit{ StatusVout, 0x20, "VOUT_UV_WARNING", Other, warning, "output voltage is low" },
   DetailBit{ StatusVout, 0x10, "VOUT_UV_FAULT", OutputFailed, critical, "output undervoltage" },
   DetailBit{ StatusVout, 0x08, "VOUT_MAX_MIN_WARNING", Other, warning,
              "asked for more output voltage than it may give" },
   DetailBit{ StatusVout, 0x04, "TON_MAX_FAULT", OutputFailed, critical,
              "output did not rise in time" },
   DetailBit{ StatusVout, 0x02, "TOFF_MAX_WARNING", Other, warning, "output did not fall in time" },
   DetailBit{ StatusVout, 0x01, "VOUT_TRACKING_ERROR", Other, warning,
              "output does not follow its reference" },

   DetailBit{ StatusIout, 0x80, "IOUT_OC_FAULT", OutputFailed, critical, "output overcurrent" },
   DetailBit{ StatusIout, 0x40, "IOUT_OC_LV_FAULT", OutputFailed, critical,
              "output overcurrent at a low voltage" },
   DetailBit{ StatusIout, 0x20, "IOUT_OC_WARNING", Other, warning, "output current is high" },
   DetailBit{ StatusIout, 0x10, "IOUT_UC_FAULT", OutputFailed, critical, "output undercurrent" },
   DetailBit{ StatusIout, 0x08, "CURRENT_SHARE_FAULT", Other, warning,
              "does not share its load with the other supplies" },
   DetailBit{ StatusIout, 0x04, "IN_POWER_LIMITING_MODE", Other, warning, "limits its power" },
   DetailBit{ StatusIout, 0x02, "POUT_OP_FAULT", OutputFailed, critical, "output overpower" },
   DetailBit{ StatusIout, 0x01, "POUT_OP_WARNING", Other, warning, "output power is high" },

   DetailBit{ StatusFans12, 0x80, "FAN_1_FAULT", FanFailed, critical, "fan 1 failed" },
   DetailBit{ StatusFans12, 0x40, "FAN_2_FAULT", FanFailed, critical, "fan 2 failed" },
   DetailBit{ StatusFans12, 0x20, "FAN_1_WARNING", FanFailed, warning, "fan 1 is slow" },
   DetailBit{ StatusFans12, 0x10, "FAN_2_WARNING", FanFailed, warning, "fan 2 is slow" },
   DetailBit{ StatusFans12, 0x08, "FAN_1_SPEED_OVERRIDDEN", Other, ok,
              "fan 1 turns faster than it was set to" },
   DetailBit{ StatusFans12, 0x04, "FAN_2_SPEED_OVERRIDDEN", Other, ok,
              "fan 2 turns faster than it was set to" },
   DetailBit{ StatusFans12, 0x02, "AIRFLOW_FAULT", FanFailed, critical, "too little air flow" },
   DetailBit{ StatusFans12, 0x01, "AIRFLOW_WARNING", FanFailed, warning, "air flow is low" },

   DetailBit{ StatusTemperature, 0x80, "OT_FAULT", OverTemperature, critical, "overtemperature" },
   DetailBit{ StatusTemperature, 0x40, "OT_WARNING", OverTemperature, warning,
              "temperature is high" },
   DetailBit{ StatusTemperature, 0x20, "UT_WARNING", Other, warning, "temperature is low" },
   DetailBit{ StatusTemperature, 0x10, "UT_FAULT", Other, critical, "undertemperature" },

   DetailBit{ StatusCml, 0x80, "INVALID_COMMAND", Communication, ok,
              "refused a command that it does not know" },
   DetailBit{ StatusCml, 0x40, "INVALID_DATA", Communication, ok, "refused data" },
   DetailBit{ StatusCml, 0x20, "PEC_FAILED", Communication, warning,
              "received a wrong packet error code" },
   DetailBit{ StatusCml, 0x10, "MEMORY_FAULT", Other, critical, "memory fault" },
   DetailBit{ StatusCml, 0x08, "PROCESSOR_FAULT", Other, critical, "processor fault" },
   DetailBit{ StatusCml, 0x02, "OTHER_COMMUNICATION_FAULT", Communication, ok,
              "communication fault" },
   DetailBit{ StatusCml, 0x01, "OTHER_MEMORY_OR_LOGIC_FAULT", Other, warning,
              "memory or logic fault" },
};

} // namespace

std::span<const SummaryBit> summaryBits() { return summaries; }
std::span<const DetailBit> detailBits() { return details; }

} // namespace Health::Pmbus
