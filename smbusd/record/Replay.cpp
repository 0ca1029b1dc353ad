#include "record/Replay.h"

#include "Decode.h"
#include "record/RecordingFile.h"

#include <fmt/format.h>

#include <deque>

namespace Smbusd {

namespace {

// The same for transactions that ask the same, whatever their time limit and retries.
std::string keyOf( const Transaction &transaction ) {
   std::string key;
   for ( const Transfer &transfer : transaction.transfers )
      key += fmt::format( "{} {}{}{}\n", describe( transfer ), transfer.offsetBytes,
                          transfer.pec ? " PEC " : " ", transfer.data );
   return key;
}

class RecordedBus final : public Carrier {
 public:
   explicit RecordedBus( std::function<void( Clock::Time )> wait ) : wait_( std::move( wait ) ) {}

   void add( const Transaction &transaction, const SmbusRecording::Transaction &recorded ) {
      answers_[keyOf( transaction )].push_back(
         { recorded.response(), Clock::Time( recorded.took_ns() ) } );
   }

   Smbus::TransactionResponse run( const Transaction &transaction ) override {
      const auto found = answers_.find( keyOf( transaction ) );
      if ( found == answers_.end() )
         return failure( fmt::format( "request 1 of {}: {} on {}: the recording has no such "
                                      "transaction",
                                      transaction.transfers.size(),
                                      describe( transaction.transfers.front() ),
                                      toString( transaction.bus ) ) );
      const Answer answer = found->second.front();
      if ( found->second.size() > 1 )
         found->second.pop_front();
      wait_( answer.took );
      return answer.response;
   }

 private:
   struct Answer {
      Smbus::TransactionResponse response;
      Clock::Time took;
   };
   const std::function<void( Clock::Time )> wait_;
   std::map<std::string, std::deque<Answer>> answers_;
};

} // namespace

Carriers replay( const std::string &path, std::function<void( Clock::Time )> wait ) {
   Carriers carriers;
   std::map<RootBusId, RecordedBus *> busses;
   readRecording( path, [&]( const SmbusRecording::Entry &entry ) {
      if ( !entry.has_transaction() )
         return;
      try {
         const Transaction transaction =
            decode( entry.transaction().request(), std::chrono::milliseconds::max() );
         if ( transaction.transfers.empty() )
            return;
         RecordedBus *&bus = busses[transaction.bus];
         if ( !bus ) {
            auto made = std::make_unique<RecordedBus>( wait );
            bus = made.get();
            carriers.emplace( transaction.bus, std::move( made ) );
         }
         bus->add( transaction, entry.transaction() );
      } catch ( const Refused & ) {
         // What made no sense then makes none now, and is told so without the recording.
      }
   } );
   return carriers;
}

} // namespace Smbusd
