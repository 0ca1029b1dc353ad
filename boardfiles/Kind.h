#pragma once

#include <optional>
#include <string_view>

namespace BoardFiles {

// A kind of object that a plug-in can bring up: the <type> in pl_<type>_add.
enum class Kind { Slot, Led, TempSensor, Fan, Xcvr, Psu, Gpio, Smbus, System };

// "temp_sensor" and so on.
std::string_view nameOf( Kind kind );
std::optional<Kind> kindOf( std::string_view name );

} // namespace BoardFiles
