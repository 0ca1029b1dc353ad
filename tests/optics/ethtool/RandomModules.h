#pragma once

#include "tests/optics/Images.h"

namespace OpticsTest {

// The memory of a module whose fields have random values, the codes one after the other. Those of
// external calibration are mostly such as makers write.
Bytes randomModule( Optics::Standard standard, uint64_t number );

} // namespace OpticsTest
