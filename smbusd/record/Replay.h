#pragma once

#include "smbusd/server/Executor.h"

#include <functional>
#include <string>

namespace Smbusd {

// Has the busses of a recording, each of which answers as it did then: a transaction gets the
// answer that the same one got, the next time the next, and when there is none left the last one
// again, for clients don't ask in step with the clock. Wait is called with the time that the answer
// took. Throws RecordingError.
Executors replay( const std::string &path, std::function<void( Bus::Clock::Time )> wait );

} // namespace Smbusd
