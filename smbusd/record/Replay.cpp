#include "smbusd/record/Replay.h"

#include "smbus/Decode.h"
#include "smbus/RecordingFile.h"

#include <fmt/format.h>

#include <deque>

namespace Smbusd {

namespace {

// The requests of a transaction. Time limit and retries are not part of it.
std::string keyOf( const Bus::Transaction &transaction ) {
   std::string key;
   for ( const Bus::Transfer &transfer : transaction.transfers )
      key += fmt::format( "{} {}{}{}\n", describe( transfer ), transfer.offsetBytes,
                          transfer.pec ? " PEC " : " ", transfer.data );
   return key;
}

class RecordedBus final : public Executor {
 public:
   explicit RecordedBus( std::function<void( Bus::Clock::Time )> wait )
      : wait_( std::move( wait ) ) {}

   void add( const Bus::Transaction &transaction, const SmbusRecording::Transaction &recorded ) {
      answers_[keyOf( transaction )].push_back(
         { recorded.response(), Bus::Clock::Time( recorded.took_ns() ) } );
   }

   void run( const Bus::Transaction &transaction, Smbus::TransactionResponse &response ) override {
      const auto found = answers_.find( keyOf( transaction ) );
      if ( found == answers_.end() ) {
         response = Bus::failure( fmt::format( "request 1 of {}: {} on {}: the recording has no "
                                               "such transaction",
                                               transaction.transfers.size(),
                                               describe( transaction.transfers.front() ),
                                               toString( transaction.bus ) ) );
         return;
      }
      const Answer answer = found->second.front();
      if ( found->second.size() > 1 )
         found->second.pop_front();
      wait_( answer.took );
      response = answer.response;
   }

 private:
   struct Answer {
      Smbus::TransactionResponse response;
      Bus::Clock::Time took;
   };
   const std::function<void( Bus::Clock::Time )> wait_;
   std::map<std::string, std::deque<Answer>> answers_;
};

} // namespace

Executors replay( const std::string &path, std::function<void( Bus::Clock::Time )> wait ) {
   Executors executors;
   std::map<Bus::RootBusId, RecordedBus *> busses;
   Bus::readRecording( path, [&]( const SmbusRecording::Entry &entry ) {
      if ( !entry.has_transaction() )
         return;
      try {
         const Bus::Transaction transaction =
            Bus::decode( entry.transaction().request(), std::chrono::milliseconds::max() );
         if ( transaction.transfers.empty() )
            return;
         RecordedBus *&bus = busses[transaction.bus];
         if ( !bus ) {
            auto made = std::make_unique<RecordedBus>( wait );
            bus = made.get();
            executors.emplace( transaction.bus, std::move( made ) );
         }
         bus->add( transaction, entry.transaction() );
      } catch ( const Bus::Refused & ) {
         // It was not valid then, so it is refused now without the recording.
      }
   } );
   return executors;
}

} // namespace Smbusd
