#include "simulator/chips/PCA9548.h"

namespace Simulator {

ChipKind pca9548Kind() {
   return { .name = "PCA9548",
            .description = "A multiplexer of eight channels.",
            .settings = { choice( "resetPin",
                                  "Whether the server can pull the reset pin, which frees the bus "
                                  "from a channel that is held; it can't without this.",
                                  { "driven", "open" } )
                             .optional() },
            .isMultiplexer = true,
            .make = []( const ChipEntry &entry ) -> std::unique_ptr<Chip> {
               return std::make_unique<PCA9548>( entry.name(),
                                                 entry.text( "resetPin", "open" ) == "driven" );
            } };
}

} // namespace Simulator
