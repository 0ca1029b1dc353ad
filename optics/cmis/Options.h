#pragma once

#include "optics/Names.h"

namespace Optics::Cmis {

// What page 01h says that the module can do.
void addOptions( const Half &advertised, Module &module );

} // namespace Optics::Cmis
