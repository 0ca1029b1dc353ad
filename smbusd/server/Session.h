#pragma once

#include "smbusd/server/Conversation.h"
#include "smbusd/server/Limits.h"
#include "smbusd/server/Transport.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <string_view>
#include <thread>

namespace Smbusd {

// The connection of one client, with a thread of its own: receives a frame, has it answered, sends
// the answer, then receives the next frame. When the length of a frame is not valid, when a frame
// is not complete in time, or when there is no memory for it, the client gets the reason as its
// answer, and the connection ends. It also ends when the client doesn't read an answer in time.
class Session {
 public:
   using Clock = SocketClock;
   using Ended = std::function<void( Session & )>;

   // Owns the socket of the peer. With a refusal, the first frame gets that as its answer, and the
   // connection ends. `ended` is called at the end of the thread, in it. The buffers outlive it.
   Session( const Peer &peer, const Limits &limits, Buffers &buffers,
            std::unique_ptr<Conversation> conversation, std::string refusal, Ended ended );
   // Ends the connection and waits for the thread.
   ~Session();
   Session( const Session & ) = delete;
   Session &operator=( const Session & ) = delete;

   // Starts the thread. Throws std::system_error.
   void start();

   const Peer &peer() const { return peer_; }
   bool refused() const { return !refusal_.empty(); }
   // Since when nothing has passed. None while a frame or its answer is under way.
   std::optional<Clock::time_point> idleSince() const;

   // Ends the connection. A running transaction is finished.
   void end();
   // Receives no more. What is in the outbox by then is still sent, as far as the client reads.
   void stop();
   // Waits until it has ended, or for the limit.
   void waitUntil( Clock::time_point limit );
   // Ends an idle connection. What its client has sent by then is still answered.
   void giveWay();

 private:
   bool hasUnread() const;
   void serve();
   void converse();
   bool waitForBytes();
   bool sendFromOutbox( Outbox &outbox );
   bool receiveMore();
   bool handleFrames( std::string_view bytes );
   void keep( std::string_view bytes, size_t frameSize );
   bool answer( bool isLast );
   bool send( std::string_view bytes );
   void refuse( const std::string &reason );

   const Peer peer_;
   const Limits limits_;
   Buffers::Part memory_;
   std::unique_ptr<Conversation> conversation_;
   const std::string refusal_;
   const Ended ended_;
   std::string received_;                      // the beginning of a frame
   size_t frameSize_ = 0;                      // of that frame; 0 while it is unknown
   std::optional<Clock::time_point> frameEnd_; // by then that frame has to be complete
   std::string unsent_;                        // from the outbox
   std::atomic<Clock::time_point> idleSince_;
   std::atomic<bool> idle_ = true;
   std::atomic<bool> sending_ = false; // the answer of a client that is idle apart from that
   std::atomic<bool> leaves_ = false;  // gives way
   std::binary_semaphore done_{ 0 };
   std::thread thread_;
};

} // namespace Smbusd
