#pragma once

#include "host/plugin/FrameBuffer.h"
#include "host/plugin/Messages.h"
#include "host/plugin/SharedPage.h"

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>

namespace Host {

// The child process with the plug-in, as its parent sees it.
class ChildProcess {
 public:
   struct Handlers {
      std::function<void( Event )> event{};
      std::function<void( const std::string & )> errorLine{}; // of its standard error
      // The child is dead. The text says why: a failed assertion, if there was one. This is the
      // last call.
      std::function<void( std::string )> died{};
   };

   // Starts this program again, as `PROGRAM child`. Throws std::system_error.
   ChildProcess( boost::asio::io_context &loop, Handlers handlers );
   // Closes the socket, and kills the child if it doesn't end then. Handlers are not called any
   // more.
   ~ChildProcess();
   ChildProcess( const ChildProcess & ) = delete;
   ChildProcess &operator=( const ChildProcess & ) = delete;

   void send( const Command &command );
   // Kills the child. The handler `died` is called later.
   void kill() const;
   // The operation of the plug-in that runs; when the child is dead, the one that was running.
   std::optional<SharedPage::Operation> operation() const { return page_.operation(); }

 private:
   void spawn( int socket, int errors );
   void receive();
   bool handleInput();
   void receiveErrors();
   bool drainErrors();
   void handleErrorLine( std::string line );
   void ended();
   void handleUnsent();
   std::string causeOfDeath( int waitStatus ) const;

   Handlers handlers_;
   boost::asio::local::stream_protocol::socket socket_;
   boost::asio::posix::stream_descriptor errors_;
   SharedPage page_{};
   pid_t process_ = -1;
   std::array<char, 4096> chunk_{};
   FrameBuffer input_{};
   bool sentNonsense_ = false;
   std::string errorInput_{};
   std::string bestErrorLine_{}; // the most useful line of its standard error
   std::shared_ptr<bool> alive_ = std::make_shared<bool>( true );
};

} // namespace Host
