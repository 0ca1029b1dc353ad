#include "smbusd/server/LogLimit.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>

namespace Smbusd {

void LogLimit::sink_it_( const spdlog::details::log_msg &line ) {
   if ( line.level != spdlog::level::warn && line.level != spdlog::level::err )
      return to_->log( line );
   const auto passed = line.time - second_;
   if ( passed < passed.zero() || passed >= std::chrono::seconds( 1 ) ) { // the clock may be set
      tellLeftOut( line.time );
      second_ = line.time;
      count_ = 0;
   }
   if ( ++count_ <= perSecond_ )
      to_->log( line );
   else
      ++leftOut_;
}

void LogLimit::tellLeftOut( spdlog::log_clock::time_point now ) {
   if ( leftOut_ == 0 )
      return;
   const std::string text = fmt::format( "{} more lines were left out: at most {} "
                                         "warnings a second are logged",
                                         std::exchange( leftOut_, 0 ), perSecond_ );
   to_->log( { now, {}, "orbis-smbusd", spdlog::level::warn, text } );
}

void LogLimit::flush_() {
   tellLeftOut( spdlog::log_clock::now() );
   to_->flush();
}

} // namespace Smbusd
