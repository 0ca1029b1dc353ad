#pragma once

#include "host/serve/Lease.h"
#include "host/serve/ServerAccounts.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <string>

namespace Host {

// Renews a lease at the server, as long as the board is under control.
class LeaseHolder {
 public:
   struct Handlers {
      std::function<std::optional<Time>()> inControl{}; // when it was last; nothing: not yet
      std::function<void()> ran{}; // the server has set the safe state since the last renewal
   };

   // All must outlive this object, and this object must outlive the loop's run. Asks the first time
   // when the loop runs.
   LeaseHolder( boost::asio::io_context &loop, const ServerAccounts &accounts, const Lease &lease,
                Handlers handlers );

 private:
   void renew();
   void answered( const SmbusControl::Response &response, const std::string &error );

   const ServerAccounts &accounts_;
   const Lease &lease_;
   const Handlers handlers_;
   boost::asio::steady_timer timer_;
   bool asks_ = false;
   bool isHeld_ = false;
   std::string error_{}; // of the last time
};

} // namespace Host
