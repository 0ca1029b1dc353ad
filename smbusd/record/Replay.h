#pragma once

#include "server/Carrier.h"

#include <functional>
#include <string>

namespace Smbusd {

// Has the busses of a recording, each of which answers as it did then: a transaction gets the
// answer that the same one got, the next time the next, and when there is none left the last one
// again, for clients don't ask in step with the clock. Wait is called with the time that the answer
// took. Throws RecordingError.
Carriers replay( const std::string &path, std::function<void( Clock::Time )> wait );

} // namespace Smbusd
