#include "BoardInOneProcess.h"

#include "PlatformLibrary/PLSocket.h"
#include "host/serve/ServerAccounts.h"
#include "smbus/Decode.h"
#include "smbusd/accounts/Report.h"

#include <algorithm>
#include <pl.h>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::chrono::seconds period( 1 ), limit( 10 );

BoardInOneProcess *theBoard = nullptr; // for the plug-in's socket
// The plug-in's driver objects outlive a board, and their clock doesn't go back.
time_t boardsBegin = 1'000'000'000;

// The plug-in's records stay until the process ends, as in a host.
Host::Record kept( Host::Record record ) {
   static auto *const all = new std::vector<Host::Record>;
   return all->emplace_back( record );
}

BoardFiles::Board load( const std::vector<std::string> &objects, bool isTurnedRound ) {
   BoardFiles::Findings findings;
   auto board =
      BoardFiles::loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   if ( !objects.empty() )
      std::erase_if( board.value().objects, [&objects]( const auto &object ) {
         return std::find( objects.begin(), objects.end(), object.name ) == objects.end();
      } );
   if ( isTurnedRound )
      std::reverse( board->objects.begin(), board->objects.end() );
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

BoardInOneProcess::BoardInOneProcess( const std::vector<std::string> &objects, bool isTurnedRound )
   : simulated_( BOARDS "/kelt/topology.json", BOARDS "/kelt/simulation.json", clock_ ),
     executors_( executors() ), services_( loop_,
                                           [this]( int level, std::string text ) {
                                              hear( Host::Trace{ level, std::move( text ), {} } );
                                           } ),
     board_( load( objects, isTurnedRound ) ) {
   theBoard = this;
   supervisor_.emplace( board_, Host::Limits{ .period = period }, now_ );
}

BoardInOneProcess::~BoardInOneProcess() {
   boardsBegin = ::time( nullptr ) + 100;
   theBoard = nullptr;
}

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
      const BoardFiles::ObjectDescription &description = board_.objects[added->object];
      records_[added->object] = kept( plugin_.add( description ) );
      if ( !description.reads.empty() )
         supplies_.emplace( added->object, std::get<pl_smbus *>( records_[added->object] ) );
   } else if ( const auto *read = std::get_if<Host::ReadCommand>( &command ) ) {
      for ( const size_t object : read->objects )
         this->read( object );
      return;
   } else if ( const auto *asked = std::get_if<Host::ActCommand>( &command ) )
      Host::act( records_.at( asked->object ), asked->action, sink() );
   hear( Host::Done{} );
}

Host::ReadingSink BoardInOneProcess::sink() {
   // A supply's limits are no part of a round: they are read once.
   return { .begun = [this]( std::string_view name ) { isReading_ = name != "limits"; },
            .done = [this]( const Host::Reading &reading ) { hear( reading ); } };
}

void BoardInOneProcess::read( size_t object ) {
   ++reads_[board_.objects[object].name];
   isReading_ = true;
   if ( const auto supply = supplies_.find( object ); supply == supplies_.end() )
      Host::read( records_.at( object ), sink() );
   else if ( const auto limits = supply->second.read( sink() ) )
      hear( *limits );
   isReading_ = false;
   hear( Host::Done{} );
}

Host::ObjectReport BoardInOneProcess::object( const std::string &name ) const {
   for ( Host::ObjectReport &object : supervisor_->report( now_ ) )
      if ( object.name == name )
         return std::move( object );
   throw std::out_of_range( name );
}

size_t BoardInOneProcess::indexOf( const std::string &name ) const {
   for ( size_t i = 0; i < board_.objects.size(); ++i )
      if ( board_.objects[i].name == name )
         return i;
   throw std::out_of_range( name );
}

const std::vector<Health::Pmbus::Limit> &
BoardInOneProcess::limits( const std::string &name ) const {
   return supervisor_->limits( indexOf( name ) );
}

bool BoardInOneProcess::act( const std::string &name, const Host::Action &action ) {
   bool isDone = false;
   supervisor_->ask(
      indexOf( name ), action,
      [&isDone]( const Host::Reading &result ) { isDone = result.state == Host::State::Ok; },
      now_ );
   runAll();
   return isDone;
}

Health::Evidence BoardInOneProcess::evidence() const {
   Smbusd::Accounts accounts;
   for ( const auto &[bus, executor] : executors_ )
      accounts.push_back( executor->account() );
   SmbusControl::Request request;
   request.set_load( true );
   return Host::evidenceOf( Smbusd::report( request, accounts, clock_.now() ) );
}

Host::Reading BoardInOneProcess::presence( const std::string &slot ) const {
   return object( slot ).values.at( 0 ).reading;
}

double BoardInOneProcess::ageOf( const std::string &slot ) const {
   return object( slot ).values.at( 0 ).age;
}

std::string BoardInOneProcess::text( const std::string &name, const std::string &reading ) const {
   for ( const Host::ValueReport &value : object( name ).values )
      if ( const auto *text = std::get_if<std::string>( &value.reading.value );
           text && value.reading.name == reading )
         return *text;
   return {};
}

unsigned BoardInOneProcess::readsOf( const std::string &object ) const {
   const auto read = reads_.find( object );
   return read == reads_.end() ? 0 : read->second;
}

// For what the plug-in's drivers have read before: they look at the clock in whole seconds.
extern "C" time_t time( time_t *to ) noexcept {
   const time_t now =
      boardsBegin + ( theBoard ? theBoard->time().count() / 1'000'000'000 : time_t{ 0 } );
   if ( to )
      *to = now;
   return now;
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
