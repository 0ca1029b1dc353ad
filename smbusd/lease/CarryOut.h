#pragma once

#include "smbusd/lease/SafeWrite.h"
#include "smbusd/server/Dispatcher.h"

namespace Smbusd {

// Carries out one write as a client of its own, with what it reads before in the same turn of the
// bus. Returns why it failed; nothing: it was acknowledged.
std::string carryOut( Dispatcher &dispatcher, const SafeWrite &write );

} // namespace Smbusd
