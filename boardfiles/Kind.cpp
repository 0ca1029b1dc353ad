#include "boardfiles/Kind.h"

#include "boardfiles/EnumNames.h"

namespace BoardFiles {
namespace {

constexpr EnumNames<Kind, 10> kindNames{ { "slot", "led", "temp_sensor", "fan", "xcvr", "psu",
                                           "gpio", "smbus", "system", "module" } };

} // namespace

std::string_view nameOf( Kind kind ) { return kindNames[kind]; }

std::optional<Kind> kindOf( std::string_view name ) { return kindNames.find( name ); }

std::string_view plugInTypeOf( Kind kind ) {
   return nameOf( kind == Kind::Module ? Kind::Smbus : kind );
}

} // namespace BoardFiles
