#include "BoardInOneProcess.h"

#include "PlatformLibrary/PLSocket.h"
#include "smbus/Decode.h"

#include <algorithm>
#include <pl.h>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::chrono::seconds period( 1 ), limit( 10 );

BoardInOneProcess *theBoard = nullptr; // for the plug-in's socket

// The plug-in's records stay until the process ends, as in a host.
Host::Record kept( Host::Record record ) {
   static auto *const all = new std::vector<Host::Record>;
   return all->emplace_back( record );
}

BoardFiles::Board load( const std::vector<std::string> &objects ) {
   BoardFiles::Findings findings;
   auto board =
      BoardFiles::loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   if ( !objects.empty() )
      std::erase_if( board.value().objects, [&objects]( const auto &object ) {
         return std::find( objects.begin(), objects.end(), object.name ) == objects.end();
      } );
   return board.value();
}

} // namespace

// A bus of the board on which the test's transfers are missed.
class BoardInOneProcess::FaultyBus final : public Bus::RootBus {
 public:
   FaultyBus( std::unique_ptr<Bus::RootBus> bus, BoardInOneProcess &board )
      : bus_( std::move( bus ) ), board_( board ) {}
   Bus::Outcome transfer( const Bus::Transfer &transfer ) override {
      if ( board_.miss_( transfer ) )
         return { {}, std::string( Bus::noAddressAcknowledge ) };
      return bus_->transfer( transfer );
   }

 private:
   const std::unique_ptr<Bus::RootBus> bus_;
   BoardInOneProcess &board_;
};

BoardInOneProcess::BoardInOneProcess( const std::vector<std::string> &objects )
   : simulated_( BOARDS "/kelt/topology.json", BOARDS "/kelt/simulation.json", clock_ ),
     executors_( executors() ), services_( loop_,
                                           [this]( int level, std::string text ) {
                                              hear( Host::Trace{ level, std::move( text ), {} } );
                                           } ),
     board_( load( objects ) ) {
   theBoard = this;
   supervisor_.emplace( board_, Host::Limits{ .period = period }, now_ );
}

BoardInOneProcess::~BoardInOneProcess() { theBoard = nullptr; }

Smbusd::Executors BoardInOneProcess::executors() {
   Bus::Busses faulty;
   for ( auto &[id, bus] : simulated_.busses() )
      faulty.emplace( id, std::make_unique<FaultyBus>( std::move( bus ), *this ) );
   return Smbusd::executorsOn( std::move( faulty ), clock_ );
}

Smbus::TransactionResponse BoardInOneProcess::run( const Smbus::TransactionRequest &request ) {
   const Bus::Transaction transaction = Bus::decode( request, limit );
   Smbus::TransactionResponse response;
   Smbusd::Executor &executor = *executors_.at( transaction.bus );
   const Smbusd::Totals before = executor.account()->figures().totals;
   executor.run( transaction, response );
   if ( isReading_ ) {
      const Smbusd::Totals now = executor.account()->figures().totals;
      BoardFiles::WireCost &cost = wires_[transaction.bus];
      cost.transfers += static_cast<double>( now.transfers - before.transfers );
      cost.bits += static_cast<double>( now.wires.bits() - before.wires.bits() );
   }
   return response;
}

void BoardInOneProcess::start() {
   supervisor_->childStarted();
   runAll();
}

void BoardInOneProcess::round() {
   now_ += period;
   clock_.advance( period );
   runAll();
}

void BoardInOneProcess::runAll() {
   reads_.clear();
   while ( const auto command = supervisor_->next( now_ ) )
      carryOut( *command );
}

void BoardInOneProcess::waitForTimers( unsigned count ) {
   isReading_ = true;
   for ( unsigned i = 0; i < count; ++i )
      loop_.run_one();
   isReading_ = false;
}

// What the child does with a command.
void BoardInOneProcess::carryOut( const Host::Command &command ) {
   if ( const auto *init = std::get_if<Host::InitCommand>( &command ) ) {
      plugin_.init( init->kind, board_.topology.c_str() );
   } else if ( const auto *added = std::get_if<Host::AddCommand>( &command ) ) {
      records_[added->object] = kept( plugin_.add( board_.objects[added->object] ) );
   } else if ( const auto *read = std::get_if<Host::ReadCommand>( &command ) ) {
      for ( const size_t object : read->objects )
         this->read( object );
      return;
   }
   hear( Host::Done{} );
}

void BoardInOneProcess::read( size_t object ) {
   ++reads_[board_.objects[object].name];
   isReading_ = true;
   Host::read( records_.at( object ),
               { .begun = []( std::string_view ) {},
                 .done = [this]( const Host::Reading &reading ) { hear( reading ); } } );
   isReading_ = false;
   hear( Host::Done{} );
}

Host::ObjectReport BoardInOneProcess::object( const std::string &name ) const {
   for ( Host::ObjectReport &object : supervisor_->report( now_ ) )
      if ( object.name == name )
         return std::move( object );
   throw std::out_of_range( name );
}

Host::Reading BoardInOneProcess::presence( const std::string &slot ) const {
   return object( slot ).values.at( 0 ).reading;
}

double BoardInOneProcess::ageOf( const std::string &slot ) const {
   return object( slot ).values.at( 0 ).age;
}

unsigned BoardInOneProcess::readsOf( const std::string &object ) const {
   const auto read = reads_.find( object );
   return read == reads_.end() ? 0 : read->second;
}

namespace PlatformLibrary {

PLSocket::PLSocket() = default;
PLSocket::~PLSocket() = default;

int PLSocket::setup() { return 0; }

int PLSocket::sendRequestWait( Smbus::TransactionRequest *request,
                               Smbus::TransactionResponse **response ) {
   *response = new Smbus::TransactionResponse( theBoard->run( *request ) );
   return 0;
}

} // namespace PlatformLibrary
