#pragma once

#include "smbusd/Peer.h"
#include "smbusd/server/Buffers.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Smbusd {

class Outbox;

// What the frames of one connection mean. For the thread of the connection.
class Conversation {
 public:
   virtual ~Conversation() = default;

   // Reads the client's next message, whose bytes don't last. Throws BuffersFull.
   virtual void take( std::string_view message, Buffers::Part & ) = 0;
   // Does what that message asks. Returns the frame of the answer; none: the connection has to end.
   // Throws BuffersFull.
   virtual std::optional<std::string> answer( Buffers::Part & ) = 0;
   // The frame of an answer that only says this.
   virtual std::string refusal( const std::string &reason ) const = 0;
   // What the client gets without asking for each. Null when there is nothing like that.
   virtual Outbox *outbox() { return nullptr; }
};

using MakeConversation = std::function<std::unique_ptr<Conversation>( const Peer & )>;

} // namespace Smbusd
