#pragma once

#include "smbusd/busses/linux/Adapter.h"
#include "smbusd/busses/linux/AdapterFinder.h"

#include <memory>

namespace Smbusd::Linux {

// The adapter of this number, by /dev/i2c-N. Throws AdapterError: not there, or no right to it.
std::unique_ptr<Adapter> openDevAdapter( unsigned number, const Places & );

} // namespace Smbusd::Linux
