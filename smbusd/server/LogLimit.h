#pragma once

#include <spdlog/sinks/base_sink.h>

#include <memory>
#include <mutex>

namespace Smbusd {

// Passes on at most so many warnings and errors a second, and says how many more there were. A
// client can cause one with each of its messages, and the log must neither fill the disk nor slow
// the others down.
class LogLimit final : public spdlog::sinks::base_sink<std::mutex> {
 public:
   LogLimit( std::shared_ptr<spdlog::sinks::sink> to, unsigned perSecond )
      : to_( std::move( to ) ), perSecond_( perSecond ) {}

 private:
   void sink_it_( const spdlog::details::log_msg & ) override;
   void flush_() override;
   void tellLeftOut( spdlog::log_clock::time_point );

   const std::shared_ptr<spdlog::sinks::sink> to_;
   const unsigned perSecond_;
   spdlog::log_clock::time_point second_; // its start
   unsigned count_ = 0;                   // in this second
   unsigned leftOut_ = 0;
};

} // namespace Smbusd
