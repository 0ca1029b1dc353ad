#include "simulator/chips/SystemCpld.h"

namespace Simulator {

ChipKind systemCpldKind() {
   return { .name = "SystemCpld",
            .description = "The CPLD with the power-cycle bit.",
            .settings = { registersKey() },
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               auto chip = std::make_unique<SystemCpld>( entry.name(), registersIn( entry ) );
               chip->onPowerCycle( entry.around.powerCycle );
               return chip;
            } };
}

} // namespace Simulator
