#pragma once

#include "smbus/Tracer.h"
#include "smbusd/server/Conversation.h"

#include <functional>

namespace Smbusd {

// Answers what the clients of the control socket ask. Called in their threads, once at a time.
using AnswerControl =
   std::function<SmbusControl::Response( const SmbusControl::Request &, const Peer & )>;

// Why a client may only look at the board, and not drive it; empty: it may.
using WhyOnlyLooks = std::function<std::string( const Peer & )>;

// What is asked at the control socket. Without a function every client may drive the board. A
// client whose trace is answered without an error gets the tracer's transfers from then on. Those
// that come while it is too slow are dropped; the next one has their number. The tracer outlives
// the conversations.
MakeConversation controlConversations( AnswerControl, Bus::Tracer &, WhyOnlyLooks = {} );

// For a server without a simulated board.
SmbusControl::Response answerWithoutBoard( const SmbusControl::Request &, const Peer & );

} // namespace Smbusd
