#include "smbusd/control/ControlConversation.h"

#include "smbusd/server/Outbox.h"
#include "sockets/Frames.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace Smbusd {

namespace {

// One request at a time. After each there is a pause as long as that took, since an answer holds
// the simulated board, and clients that ask without end must leave it to the busses half of the
// time.
class Desk {
 public:
   explicit Desk( AnswerControl answer ) : answer_( std::move( answer ) ) {}

   SmbusControl::Response answer( const SmbusControl::Request &request, const Peer &peer ) {
      const std::lock_guard lock( mutex_ );
      std::this_thread::sleep_until( free_ );
      const auto begun = Clock::now();
      SmbusControl::Response response = answer_( request, peer );
      const auto ended = Clock::now();
      free_ = ended + std::min<Clock::duration>( ended - begun, longestPause );
      return response;
   }

 private:
   using Clock = std::chrono::steady_clock;
   static constexpr std::chrono::milliseconds longestPause{ 10 };

   const AnswerControl answer_;
   std::mutex mutex_;
   Clock::time_point free_{};
};

// Whether it leaves the simulated board as it is.
bool onlyLooks( const SmbusControl::Request &request ) {
   return request.has_list() || request.has_get() || request.has_trace() || request.has_time() ||
          request.has_load() || request.has_last();
}

class ControlConversation final : public Conversation {
 public:
   ControlConversation( std::shared_ptr<Desk> desk, Bus::Tracer &tracer, const Peer &peer,
                        std::string whyOnlyLooks )
      : desk_( std::move( desk ) ), tracer_( tracer ), peer_( peer ),
        whyOnlyLooks_( std::move( whyOnlyLooks ) ) {}
   ~ControlConversation() override { tracer_.remove( this ); }
   ControlConversation( const ControlConversation & ) = delete;
   ControlConversation &operator=( const ControlConversation & ) = delete;

   void take( std::string_view message, Buffers::Part &memory ) override {
      memory.holds( 2 * message.size() );
      isRequest_ = request_.ParseFromArray( message.data(), static_cast<int>( message.size() ) );
   }

   std::optional<std::string> answer( Buffers::Part &memory ) override {
      if ( !isRequest_ )
         return refusal( "the frame is not a request" );
      if ( !whyOnlyLooks_.empty() && !onlyLooks( request_ ) )
         return refusal( whyOnlyLooks_ );
      const SmbusControl::Response response = desk_->answer( request_, peer_ );
      try {
         if ( request_.has_trace() && response.error().empty() && !outbox_ )
            trace();
      } catch ( const std::system_error &lacking ) {
         return refusal( lacking.what() );
      }
      request_.Clear();
      memory.holds( 2 * response.ByteSizeLong() );
      return Sockets::framed( response );
   }

   std::string refusal( const std::string &reason ) const override {
      SmbusControl::Response response;
      response.set_error( reason );
      return Sockets::framed( response );
   }

   Outbox *outbox() override { return outbox_.get(); }

 private:
   void trace() {
      outbox_ = std::make_unique<Outbox>();
      tracer_.add( this,
                   [this, lost = uint64_t{ 0 }]( const SmbusControl::Transfer &transfer ) mutable {
                      SmbusControl::Response response;
                      *response.mutable_transfer() = transfer;
                      response.mutable_transfer()->set_lost( lost );
                      lost = outbox_->add( Sockets::framed( response ) ) ? 0 : lost + 1;
                   } );
   }

   const std::shared_ptr<Desk> desk_;
   Bus::Tracer &tracer_;
   const Peer peer_;
   const std::string whyOnlyLooks_;
   SmbusControl::Request request_;
   bool isRequest_ = false;
   std::unique_ptr<Outbox> outbox_;
};

} // namespace

MakeConversation controlConversations( AnswerControl answer, Bus::Tracer &tracer,
                                       WhyOnlyLooks whyOnlyLooks ) {
   return [desk = std::make_shared<Desk>( std::move( answer ) ), &tracer,
           whyOnlyLooks]( const Peer &peer ) {
      return std::make_unique<ControlConversation>( desk, tracer, peer,
                                                    whyOnlyLooks ? whyOnlyLooks( peer ) : "" );
   };
}

SmbusControl::Response answerWithoutBoard( const SmbusControl::Request &, const Peer & ) {
   SmbusControl::Response response;
   response.set_error( "no board is simulated" );
   return response;
}

} // namespace Smbusd
