#pragma once

#include "smbusd/server/Executor.h"

#include <functional>
#include <string>

namespace Smbusd {

// The busses of a recording. A transaction gets the answers that the same transaction got when it
// was recorded, in the same order; after the last one, it gets that again, because clients may ask
// more often than then. Wait is called with the time that the answer took then. Throws
// RecordingError.
Executors replay( const std::string &path, std::function<void( Bus::Clock::Time )> wait );

} // namespace Smbusd
