// A server in the process of the test, with both its sockets, on busses that the test can stop.
#pragma once

#include "ManualClock.h"
#include "OrbisUtil/Smbus.pb.h"
#include "PrivateFolder.h"
#include "RawClient.h"
#include "smbus/RootBus.h"
#include "smbusd/control/ControlConversation.h"
#include "smbusd/server/Server.h"
#include "smbusd/server/SmbusConversation.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace SmbusdTest {

using TestSupport::ManualClock;
using TestSupport::RawClient;

// Answers reads with its name, and zeroes behind it. stopAt() makes one transfer wait for goOn().
class StoppableBus final : public Bus::RootBus {
 public:
   explicit StoppableBus( std::string name ) : name_( std::move( name ) ) {}
   Bus::Outcome transfer( const Bus::Transfer & ) override;

   void stopAt( const std::string &transfer ); // the text of describe()
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

struct ServerSettings {
   Smbusd::Limits limits{ .clientsPerProcess = 128 };
   Smbusd::Limits controlLimits{ .clients = 16, .clientsPerProcess = 16 };
   size_t buffers = 64u << 20;
   Smbusd::AnswerControl answerControl = Smbusd::answerWithoutBoard;
};

class RunningServer {
 public:
   // Has the busses scd(4):1:2 and i2c:0.
   explicit RunningServer( const ServerSettings &settings = {} );
   ~RunningServer();

   StoppableBus &bus( const std::string &name ) { return *busses_.at( name ); }
   // Waits until so many transactions wait for their turn on the bus.
   void waitForQueue( const std::string &bus, size_t length ) const;
   Smbusd::Dispatcher &dispatcher() { return *dispatcher_; }
   ManualClock &clock() { return clock_; }
   const std::string &path() const { return path_; }
   const std::string &controlPath() const { return controlPath_; }
   Smbusd::Buffers &buffers() { return buffers_; }
   Bus::Tracer &tracer() { return tracer_; }

 private:
   TestSupport::PrivateFolder folder_;
   const std::string path_ = folder_.file( "smbus.sock" );
   const std::string controlPath_ = folder_.file( "smbus.sock.control" );
   ManualClock clock_;
   std::map<std::string, StoppableBus *> busses_;
   boost::asio::io_context context_;
   Smbusd::Buffers buffers_;
   std::unique_ptr<Smbusd::Dispatcher> dispatcher_;
   Bus::Tracer tracer_;
   std::unique_ptr<Smbusd::Server> server_;
   std::unique_ptr<Smbusd::Server> control_;
   std::thread thread_;
};

} // namespace SmbusdTest
