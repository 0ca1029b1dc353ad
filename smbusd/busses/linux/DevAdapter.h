#pragma once

#include "smbusd/busses/linux/Adapter.h"
#include "smbusd/busses/linux/AdapterFinder.h"

#include <memory>

namespace Smbusd::Linux {

// Opens /dev/i2c-N. Throws AdapterError when it does not exist or may not be opened, or when
// another process has claimed it, if it is to be claimed.
std::unique_ptr<Adapter> openDevAdapter( unsigned number, const Places &, bool claims = true );

} // namespace Smbusd::Linux
