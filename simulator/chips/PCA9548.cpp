#include "simulator/chips/PCA9548.h"

namespace Simulator {

ChipKind pca9548Kind() {
   return { .name = "PCA9548",
            .description = "A multiplexer of eight channels.",
            .isMultiplexer = true,
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               return std::make_unique<PCA9548>( entry.name() );
            } };
}

} // namespace Simulator
