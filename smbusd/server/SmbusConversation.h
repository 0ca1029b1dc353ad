#pragma once

#include "smbusd/server/Conversation.h"
#include "smbusd/server/Dispatcher.h"

namespace Smbusd {

// Has a client's transactions carried out.
class SmbusConversation final : public Conversation {
 public:
   // The gate may be null.
   SmbusConversation( Dispatcher &dispatcher, const Peer &peer, const Gate *gate )
      : dispatcher_( dispatcher ), peer_( peer ), gate_( gate ) {}

   void take( std::string_view message, Buffers::Part & ) override;
   std::optional<std::string> answer( Buffers::Part & ) override;
   std::string refusal( const std::string &reason ) const override;

 private:
   Dispatcher &dispatcher_;
   const Peer peer_;
   const Gate *const gate_;
   Dispatcher::Exchange exchange_; // used again, so that its memory is, too
   size_t requestBytes_ = 0;
   std::string wrong_; // why the message is not a transaction
};

// The dispatcher and the gate outlive the conversations.
inline MakeConversation conversationsWith( Dispatcher &dispatcher, const Gate *gate = nullptr ) {
   return [&dispatcher, gate]( const Peer &peer ) {
      return std::make_unique<SmbusConversation>( dispatcher, peer, gate );
   };
}

} // namespace Smbusd
