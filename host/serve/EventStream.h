#pragma once

#include "host/journal/Journal.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <chrono>
#include <memory>

namespace Host {

class Events;

struct StreamLimits {
   std::chrono::milliseconds write;   // a client that takes nothing for so long is dropped
   std::chrono::milliseconds comment; // a client without events gets a comment then
};

// Sends the events that the query asks for, and then those that come, as server-sent events, until
// the client disconnects. What is not sent yet is in the journal, not in memory. `open` stays as
// long as the stream.
void streamEvents( boost::beast::basic_stream<boost::asio::local::stream_protocol> connection,
                   Events &events, const Journal::Query &query, const StreamLimits &limits,
                   std::shared_ptr<void> open );

} // namespace Host
