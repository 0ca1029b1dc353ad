// The simulated Kelt board with its whole column in this process: a supervisor with a clock that is
// turned by hand, the plug-in, and in place of its socket the server's transactions on the board.
#pragma once

#include "ManualClock.h"

#include "health/Evidence.h"
#include "host/plugin/Objects.h"
#include "host/plugin/Services.h"
#include "host/session/Supervisor.h"
#include "simulator/board/Controls.h"
#include "simulator/board/SimulatedBoard.h"
#include "smbusd/server/Executor.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

class BoardInOneProcess {
 public:
   // With these objects of the board; with all where none is named, but the modules in its cages
   // only where they are wanted. The last one of the board's file comes first where it is turned
   // round. One at a time.
   explicit BoardInOneProcess( const std::vector<std::string> &objects = {},
                               bool isTurnedRound = false, bool withModules = false );
   ~BoardInOneProcess();
   BoardInOneProcess( const BoardInOneProcess & ) = delete;
   BoardInOneProcess &operator=( const BoardInOneProcess & ) = delete;

   // The bench's side.
   Simulator::Chip &chip( const std::string &name ) { return simulated_.bench().chip( name ); }
   void pull( const std::string &module ) { simulated_.bench().pull( module ); }
   void insert( const std::string &module ) { simulated_.bench().insert( module ); }
   // As orbis-smbus sim asks for it; all but the clock. An error says why it can't be done.
   SmbusControl::Response ask( const SmbusControl::Request &request ) {
      return controls_.answer( request );
   }
   // The address of these transfers is not acknowledged.
   void missWhere( std::function<bool( const Bus::Transfer & )> miss ) {
      miss_ = std::move( miss );
   }

   // As if the plug-in's data did not say which transfer of a read is the first.
   void forgetFirstTransfers() { board_.traces.absentFirst.clear(); }

   // Brings the objects up and reads them once. After that they are read a period after the last
   // time.
   void start();
   void round();
   // Only time passes.
   void pass( Host::Clock::duration time );
   // What is due now is done.
   void work();
   // The child ends, and nothing is brought up until start().
   void kill() { supervisor_->childDied( "killed", now_ ); }

   // All objects, as a user is told; and what the server knows of failures.
   Host::BoardReport report() const { return supervisor_->report( now_ ); }
   Health::Evidence evidence() const;
   SmbusControl::Response loads() const; // of all busses
   Bus::Clock::Time time() const { return clock_.now(); }
   const Bus::Clock &clock() const { return clock_; }

   // A slot, as a user is told.
   Host::Reading presence( const std::string &slot ) const;
   double ageOf( const std::string &slot ) const;
   // How often it was read in the last round.
   unsigned readsOf( const std::string &object ) const;

   // What is known of any object.
   Host::ObjectReport object( const std::string &name ) const;
   const std::vector<Health::Pmbus::Limit> &limits( const std::string &object ) const;
   // Has the object do something. Returns whether it did.
   bool act( const std::string &object, const Host::Action &action );
   // A reading's text; empty where it has none.
   std::string text( const std::string &object, const std::string &reading ) const;

   // What readings and timers have put on each root bus since forgetWires(), as the server counts
   // it.
   void forgetWires() { wires_.clear(); }
   const std::map<Bus::RootBusId, BoardFiles::WireCost> &onTheWires() const { return wires_; }
   // Waits until so many timers of the plug-in have run.
   void waitForTimers( unsigned count );
   const BoardFiles::Board &board() const { return board_; }

   const Host::Supervisor &supervisor() const { return *supervisor_; }
   Host::Time now() const { return now_; }

   // For the plug-in's socket.
   Smbus::TransactionResponse run( const Smbus::TransactionRequest & );

 private:
   class FaultyBus;

   static boost::asio::io_context &loop();
   static Host::Services &services();
   Smbusd::Executors executors();
   Host::Objects::Sinks sinks();
   size_t indexOf( const std::string &object ) const;
   void carryOut( const Host::Command & );
   void read( size_t object, bool fresh );
   void hear( const Host::Event &event ) { supervisor_->heard( event, now_ ); }
   void runAll();

   TestSupport::ManualClock clock_;
   Simulator::SimulatedBoard simulated_;
   Simulator::SimulationClock noClock_{ clock_, 1 };
   Simulator::Controls controls_{ simulated_.bench(), noClock_ };
   std::function<bool( const Bus::Transfer & )> miss_ = []( const auto & ) { return false; };
   Smbusd::Executors executors_;
   BoardFiles::Board board_;
   Host::Time now_{ std::chrono::hours( 1 ) };
   std::optional<Host::Supervisor> supervisor_;
   Host::Objects &objects_;
   std::set<size_t> added_; // they stay: a child that comes after another one has them, too
   std::map<Bus::RootBusId, BoardFiles::WireCost> wires_;
   bool isReading_ = false; // what is on the busses counts
   std::map<std::string, unsigned> reads_;
};
