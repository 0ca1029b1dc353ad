// A server in the test's own process, on busses that the test holds in its hands.
#pragma once

#include "HandClock.h"
#include "OrbisUtil/Smbus.pb.h"
#include "PrivateFolder.h"
#include "busses/RootBus.h"
#include "server/Server.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace SmbusdTest {

// Answers reads with its own name. A transfer of which it is told to stop waits until it may go on.
class HeldBus final : public Smbusd::RootBus {
 public:
   explicit HeldBus( std::string name ) : name_( std::move( name ) ) {}
   Smbusd::Outcome transfer( const Smbusd::Transfer & ) override;

   void stopAt( const std::string &transfer ); // as describe() has it
   void waitUntilStopped();
   void goOn();
   std::vector<std::string> log() const;

 private:
   const std::string name_;
   mutable std::mutex mutex_;
   std::condition_variable changed_;
   std::string stopAt_;
   bool stopped_ = false;
   std::vector<std::string> log_;
};

// A client that can say anything. Waits five seconds at most for anything.
class RawClient {
 public:
   explicit RawClient( const std::string &path );
   ~RawClient() { leave(); }
   RawClient( const RawClient & ) = delete;
   RawClient &operator=( const RawClient & ) = delete;

   void send( const std::string &bytes );
   void send( const Smbus::TransactionRequest & );
   std::optional<Smbus::TransactionResponse> receive(); // nothing when the connection has ended
   Smbus::TransactionResponse ask( const Smbus::TransactionRequest & );
   void leave();

 private:
   int fd_;
};

class RunningServer {
 public:
   // Has the busses scd(4):1:2 and i2c:0.
   RunningServer();
   ~RunningServer();

   HeldBus &bus( const std::string &name ) { return *held_.at( name ); }
   Smbusd::Dispatcher &dispatcher() { return *dispatcher_; }
   HandClock &clock() { return clock_; }
   const std::string &path() const { return path_; }

 private:
   TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "smbus.sock" );
   HandClock clock_;
   std::map<std::string, HeldBus *> held_;
   boost::asio::io_context context_;
   std::unique_ptr<Smbusd::Dispatcher> dispatcher_;
   std::unique_ptr<Smbusd::Server> server_;
   std::thread thread_;
};

} // namespace SmbusdTest
