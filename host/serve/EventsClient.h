#pragma once

#include "health/Event.h"
#include "host/serve/Client.h"

#include <boost/asio/io_context.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Host {

// The events that a running serve answers to a query, "since=17&object=fan1", oldest first. Nothing
// without an answer; then `error` says why.
std::optional<std::vector<Health::Event>> eventsOf( const Client &serve, const std::string &query,
                                                    std::string &error );

// Has a running serve note that a person has seen a cause. Returns why it did not; usually nothing.
std::string acknowledge( const Client &serve, const std::string &cause );

// Hears the events of a running serve as they come, until `loop` stops. While no serve answers, it
// tries again every second, and misses nothing that the journal keeps.
class FollowedEvents {
 public:
   struct Handlers {
      std::function<void( const Health::Event & )> heard{};
      std::function<void( const std::string &why )> lost{}; // once for each connection
   };
   // Begins behind the event with this id. The query is as above, without since.
   FollowedEvents( boost::asio::io_context &loop, std::filesystem::path socket, std::string query,
                   uint64_t after, Handlers handlers );

 private:
   class Connection;
   std::shared_ptr<Connection> connection_;
};

} // namespace Host
