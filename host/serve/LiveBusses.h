#pragma once

#include "smbus/Control.pb.h"

#include <deque>
#include <string>
#include <vector>

namespace Host {

// The busses for a page that is open, from what the plug-in's server tells again and again.
class LiveBusses {
 public:
   // How busy they are is told of the time since the last answer but one; of the time since the
   // server's start as long as there is no other.
   void told( const SmbusControl::Response &now );
   // Of each bus a JSON object, "bus" of boards/live.schema.json.
   const std::vector<std::string> &json() const { return json_; }

 private:
   std::deque<SmbusControl::Response> before_{}; // at most two
   std::vector<std::string> json_{};
};

} // namespace Host
