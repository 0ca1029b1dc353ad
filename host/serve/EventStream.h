#pragma once

#include "host/journal/Journal.h"
#include "http/Exchange.h"

#include <memory>

namespace Host {

class Events;

// The events that the query asks for, and then those that come, as server-sent events. What is not
// sent yet is in the journal, not in memory. `events` outlives it.
std::shared_ptr<Http::Stream> streamOf( Events &events, Journal::Query query );

} // namespace Host
