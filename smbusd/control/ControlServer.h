#pragma once

#include "simulator/board/Controls.h"
#include "smbus/Tracer.h"
#include "sockets/SocketFile.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>

#include <memory>
#include <set>

namespace Smbusd {

// One client of the control socket. Traced transfers are queued for it, up to a limit. Beyond that
// they are dropped; the next one has their number.
class ControlSession : public std::enable_shared_from_this<ControlSession> {
 public:
   using Socket = boost::asio::local::stream_protocol::socket;
   using Ended = std::function<void( const std::shared_ptr<ControlSession> & )>;

   ControlSession( Socket, Simulator::Controls &, Bus::Tracer &, Ended );

   void start() { readMore(); }
   void end();

 private:
   void readMore();
   void handleFrames();
   void handle( std::string_view message );
   void trace();
   void send( std::string bytes );
   void sendNext();

   Socket socket_;
   Simulator::Controls &controls_;
   Bus::Tracer &tracer_;
   const Ended ended_;
   bool over_ = false;
   std::array<char, 4096> chunk_;
   std::string received_;
   std::vector<std::string> waiting_; // to be sent after sending_
   std::string sending_;
   std::shared_ptr<std::atomic<unsigned>> queued_ = std::make_shared<std::atomic<unsigned>>( 0 );
};

// The socket that controls a simulated board. Everything runs in the thread of the io_context.
// Controls and tracer outlive it.
class ControlServer {
 public:
   static constexpr size_t maxClients = 16; // further connections are closed without an answer

   ControlServer( boost::asio::io_context &, std::unique_ptr<Sockets::SocketFile>,
                  Simulator::Controls &, Bus::Tracer & );
   void stop();

 private:
   using Protocol = boost::asio::local::stream_protocol;

   void accept();

   std::unique_ptr<Sockets::SocketFile> file_;
   Simulator::Controls &controls_;
   Bus::Tracer &tracer_;
   Protocol::acceptor acceptor_;
   std::set<std::shared_ptr<ControlSession>> sessions_;
};

} // namespace Smbusd
