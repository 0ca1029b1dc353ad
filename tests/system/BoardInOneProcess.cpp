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

constexpr std::chrono::seconds period( 1 ), periodOfModules( 10 ), limit( 10 );

BoardInOneProcess *theBoard = nullptr; // for the plug-in's socket
// The plug-in's driver objects outlive a board, and their clock doesn't go back.
time_t boardsBegin = 1'000'000'000;

// The plug-in's objects stay until the process ends, as in a host.
Host::Objects &keptObjects( Host::ModuleReader::Pause pause ) {
   static auto *const all = new std::vector<std::unique_ptr<Host::Objects>>;
   return *all->emplace_back( std::make_unique<Host::Objects>( std::move( pause ) ) );
}

BoardFiles::Board load( const std::vector<std::string> &objects, bool isTurnedRound,
                        bool withModules ) {
   BoardFiles::Findings findings;
   auto board =
      BoardFiles::loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   if ( objects.empty() && !withModules )
      board = BoardFiles::withoutModules( board.value() );
   else if ( !objects.empty() )
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

BoardInOneProcess::BoardInOneProcess( const std::vector<std::string> &objects, bool isTurnedRound,
                                      bool withModules )
   : simulated_( BOARDS "/kelt/topology.json", BOARDS "/kelt/simulation.json", clock_ ),
     executors_( executors() ), board_( load( objects, isTurnedRound, withModules ) ),
     objects_( keptObjects( [this]( auto time ) { clock_.advance( time ); } ) ) {
   theBoard = this;
   services();
   objects_.load( "" ); // this program
   supervisor_.emplace(
      board_,
      Host::Limits{ .period = period,
                    .periods = { { BoardFiles::Kind::Module, periodOfModules } } },
      now_ );
}

BoardInOneProcess::~BoardInOneProcess() {
   boardsBegin = ::time( nullptr ) + 100;
   theBoard = nullptr;
}

// The timers of the plug-in's driver objects outlive a board, too.
boost::asio::io_context &BoardInOneProcess::loop() {
   static auto *const all = new boost::asio::io_context;
   return *all;
}

Host::Services &BoardInOneProcess::services() {
   static auto *const all = new Host::Services( loop(), []( int level, std::string text ) {
      if ( theBoard )
         theBoard->hear( Host::Trace{ level, std::move( text ), {} } );
   } );
   return *all;
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

void BoardInOneProcess::pass( Host::Clock::duration time ) {
   now_ += time;
   clock_.advance( time );
}

void BoardInOneProcess::round() {
   pass( period );
   work();
}

void BoardInOneProcess::work() {
   services().expireTimers(); // of drivers that poll in each second
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
      loop().run_one();
   isReading_ = false;
}

// What the child does with a command.
void BoardInOneProcess::carryOut( const Host::Command &command ) {
   Host::Done done;
   if ( const auto *init = std::get_if<Host::InitCommand>( &command ) )
      done = objects_.init( init->kind, board_.topology.c_str() );
   else if ( const auto *added = std::get_if<Host::AddCommand>( &command ) )
      done = added_.insert( added->object ).second
                ? objects_.add( added->object, board_.objects[added->object] )
                : Host::Done();
   else if ( const auto *asked = std::get_if<Host::ActCommand>( &command ) )
      done = objects_.act( *asked, sinks() );
   else if ( const auto *read = std::get_if<Host::ReadCommand>( &command ) ) {
      for ( const size_t object : read->objects )
         this->read( object, std::count( read->fresh.begin(), read->fresh.end(), object ) > 0 );
      return;
   }
   hear( done );
}

Host::Objects::Sinks BoardInOneProcess::sinks() {
   // A supply's limits are no part of a round: they are read once.
   return { { .begun = [this]( std::string_view name ) { isReading_ = name != "limits"; },
              .done = [this]( const Host::Reading &reading ) { hear( reading ); } },
            [this]( const Host::Event &event ) { hear( event ); } };
}

void BoardInOneProcess::read( size_t object, bool fresh ) {
   ++reads_[board_.objects[object].name];
   isReading_ = true;
   const Host::Done done = objects_.read( object, fresh, sinks() );
   isReading_ = false;
   hear( done );
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

Health::Evidence BoardInOneProcess::evidence() const { return Host::evidenceOf( loads() ); }

SmbusControl::Response BoardInOneProcess::loads() const {
   std::vector<Smbusd::KnownBus> busses;
   for ( const auto &[bus, executor] : executors_ )
      busses.push_back( { executor->account(), executor->quarantine() } );
   SmbusControl::Request request;
   request.set_load( true );
   return Smbusd::report( request, busses, clock_.now() );
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
