#pragma once

#include "http/Exchange.h"
#include "http/Server.h"

#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <memory>

namespace Http {

// Sends what the stream has, and then what comes, until the client disconnects. What is not sent
// yet stays with the stream, not in memory. `open` stays as long as the connection.
void send( boost::beast::basic_stream<boost::asio::generic::stream_protocol> connection,
           std::shared_ptr<Stream> stream, const Limits &limits, std::shared_ptr<void> open );

} // namespace Http
