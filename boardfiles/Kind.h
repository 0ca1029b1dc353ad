#pragma once

#include <optional>
#include <string_view>

namespace BoardFiles {

// A kind of object of a board. All but the last are the <type> in pl_<type>_add.
enum class Kind {
   Slot,
   Led,
   TempSensor,
   Fan,
   Xcvr,
   Psu,
   Gpio,
   Smbus,
   System,
   Module, // the memory of the module in a cage, which a plug-in reaches through SMBus objects
};

// "temp_sensor" and so on.
std::string_view nameOf( Kind kind );
std::optional<Kind> kindOf( std::string_view name );
// The <type> in pl_<type>_add.
std::string_view plugInTypeOf( Kind kind );

} // namespace BoardFiles
