#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace Host {

// Memory that the child shares with the parent. The child writes to it without a system call, and
// the parent can still read it when the child has died or hangs. It holds the operation of the
// plug-in that runs, and the messages that the child did not send yet.
class SharedPage {
 public:
   using Time = std::chrono::steady_clock::time_point;
   struct Operation {
      std::string name{}; // "pl_led_init", "pl_led_add" or a value's name
      Time since{};
   };

   // New memory. The child gets its descriptor. Both throw std::system_error.
   SharedPage();
   // The memory of a descriptor, which this object closes.
   explicit SharedPage( int descriptor );
   ~SharedPage();
   SharedPage( const SharedPage & ) = delete;
   SharedPage &operator=( const SharedPage & ) = delete;

   int descriptor() const { return descriptor_; }

   // The child's side.
   void operationBegins( std::string_view name, Time now );
   void operationEnds();
   // Adds to what is not sent yet. False when there is no room.
   bool keep( std::string_view bytes );
   // What is not sent yet, until the next keep(). It no longer counts as such.
   std::string_view take();

   // The parent's side. The child may have written anything there before it died.
   std::optional<Operation> operation() const; // nothing between operations
   std::string_view unsent() const;

 private:
   struct Layout;

   int descriptor_;
   Layout *layout_;
};

} // namespace Host
