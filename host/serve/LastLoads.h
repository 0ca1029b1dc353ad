#pragma once

#include "host/serve/ServerAccounts.h"
#include "host/session/BackOff.h"

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace Host {

// What the plug-in's server has told of its busses, and when.
struct KnownLoads {
   std::shared_ptr<const SmbusControl::Response> loads{}; // null: it never did
   double age = 0;                                        // seconds
};

// The loads of the busses, for who can't wait long.
class LastLoads {
 public:
   using Answer = std::function<void( const KnownLoads & )>;

   // Both must outlive this object, and this object must outlive the loop's run.
   LastLoads( boost::asio::io_context &loop, const ServerAccounts &accounts,
              std::chrono::milliseconds patience )
      : loop_( loop ), accounts_( accounts ), patience_( patience ) {}

   // Asks the server. Calls back once, on the loop: when it has answered, or with what it told
   // before when that takes too long. An answer that comes later is kept for the next time.
   void ask( Answer answer );

 private:
   struct Waiting;

   void answered();
   KnownLoads known() const;

   boost::asio::io_context &loop_;
   const ServerAccounts &accounts_;
   const std::chrono::milliseconds patience_;
   std::shared_ptr<const SmbusControl::Response> loads_{};
   Time at_ = Clock::now(); // of the loads; without any, of the beginning
   bool asks_ = false;
   std::vector<std::shared_ptr<Waiting>> waiting_{};
};

} // namespace Host
