#pragma once

#include "http/Exchange.h"
#include "http/Guard.h"
#include "http/Server.h"

#include <boost/asio/generic/stream_protocol.hpp>
#include <memory>
#include <optional>
#include <string>

namespace Http {

// What a connection needs of its server, which it may outlive.
struct Service {
   std::shared_ptr<const Handler> handler{};
   Limits limits{};
   std::optional<Guard> guard{};
   std::string onlyReads{};           // why the client may only read; empty: it may act
   std::shared_ptr<void> open{};      // counts the connections
   std::shared_ptr<size_t> streams{}; // how many of them are streams
};

// Answers the requests of a client, or only tells it that there are too many.
void serve( boost::asio::generic::stream_protocol::socket socket, Service service, bool tooMany );

} // namespace Http
