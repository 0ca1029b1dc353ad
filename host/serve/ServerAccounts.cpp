#include "host/serve/ServerAccounts.h"

#include "smbus/BusLoads.h"

#include <algorithm>
#include <array>
#include <boost/asio.hpp>
#include <fmt/format.h>
#include <memory>
#include <sockets/Frames.h>
#include <sockets/Unreachable.h>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;
using boost::system::error_code;

Health::BusFault faultOf( SmbusControl::ChipLoad::Failure failure ) {
   switch ( failure ) {
   case SmbusControl::ChipLoad::NO_ACKNOWLEDGE:
      return Health::BusFault::NoAcknowledge;
   case SmbusControl::ChipLoad::PEC:
      return Health::BusFault::Pec;
   case SmbusControl::ChipLoad::TIMEOUT:
      return Health::BusFault::Timeout;
   case SmbusControl::ChipLoad::HELD_LOW:
      return Health::BusFault::HeldLow;
   default: // also what a newer server tells
      return Health::BusFault::Other;
   }
}

// "1a 00".
std::string hexOf( const std::string &data ) {
   std::string text;
   for ( const char byte : data )
      text += fmt::format( "{}{:02x}", text.empty() ? "" : " ", static_cast<uint8_t>( byte ) );
   return text;
}

PassedTransfer passedOf( const SmbusControl::Transfer &passed, double now ) {
   return { .place = { passed.bus(), passed.segment(), passed.address() },
            .age = std::max( 0.0, now - passed.seconds() ),
            .operation = passed.operation(),
            .data = hexOf( passed.written() + passed.read() ),
            .error = passed.error() };
}

bool concerns( const SmbusControl::Quarantined &segment,
               const std::vector<BoardFiles::ChipPlace> &chips ) {
   return std::any_of( chips.begin(), chips.end(), [&]( const BoardFiles::ChipPlace &chip ) {
      return chip.bus == segment.bus() && ( segment.whole_bus() || chip.path == segment.path() ||
                                            chip.path.starts_with( segment.path() + " " ) );
   } );
}

} // namespace

Health::Evidence evidenceOf( const SmbusControl::Response &response ) {
   Health::Evidence evidence;
   for ( const SmbusControl::BusLoad &load : response.bus() ) {
      Health::BusEvidence &bus = evidence.emplace_back();
      bus.bus = load.bus();
      bus.isHeld = load.has_held();
      bus.heldPath = load.held();
      for ( const SmbusControl::Quarantined &segment : load.quarantined() )
         bus.quarantined.push_back( { segment.path(), segment.whole_bus() } );
      for ( const SmbusControl::Segment &segment : load.segment() )
         for ( const SmbusControl::ChipLoad &chip : segment.chip() )
            bus.chips.push_back( { .path = segment.path(),
                                   .address = chip.address(),
                                   .transfers = chip.totals().transfers(),
                                   .failuresInARow = chip.failures_in_a_row(),
                                   .last = faultOf( chip.last_failure() ) } );
   }
   return evidence;
}

// One question, on a connection of its own. It lives as long as it has to call back.
class ServerAccounts::Question : public std::enable_shared_from_this<Question> {
 public:
   Question( boost::asio::io_context &loop, std::string path, const SmbusControl::Request &request,
             LoadsAnswer ended )
      : path_( std::move( path ) ), socket_( loop ), limit_( loop ), ended_( std::move( ended ) ),
        bytes_( Sockets::framed( request ) ) {}

   void ask( std::chrono::milliseconds limit ) {
      limit_.expires_after( limit );
      limit_.async_wait( [self = shared_from_this()]( const error_code &failure ) {
         if ( !failure )
            self->end( {}, self->path_ + ": no answer in time" );
      } );
      socket_.async_connect( path_, [self = shared_from_this()]( const error_code &failure ) {
         failure ? self->end( {}, Sockets::whyUnreachable( self->path_, failure.value() ) )
                 : self->send();
      } );
   }

 private:
   void send() {
      boost::asio::async_write( socket_, boost::asio::buffer( bytes_ ),
                                [self = shared_from_this()]( const error_code &failure, size_t ) {
                                   self->bytes_.clear();
                                   failure ? self->end( {}, self->path_ + ": " + failure.message() )
                                           : self->receive();
                                } );
   }
   void receive() {
      socket_.async_read_some(
         boost::asio::buffer( chunk_ ),
         [self = shared_from_this()]( const error_code &failure, size_t count ) {
            if ( failure )
               return self->end( {}, self->path_ + ": " + failure.message() );
            self->bytes_.append( self->chunk_.data(), count );
            self->take();
         } );
   }
   void take() {
      const Sockets::Frame frame = Sockets::firstFrame( bytes_ );
      if ( frame.state == Sockets::Frame::State::Incomplete )
         return receive();
      SmbusControl::Response response;
      if ( frame.state != Sockets::Frame::State::Whole ||
           !response.ParseFromArray( frame.message.data(),
                                     static_cast<int>( frame.message.size() ) ) )
         return end( {}, path_ + ": the answer is not valid" );
      if ( !response.error().empty() )
         return end( {}, path_ + ": " + response.error() );
      end( response, {} );
   }
   // What comes after the first end counts no more.
   void end( const SmbusControl::Response &response, std::string error ) {
      limit_.cancel();
      error_code ignored;
      socket_.close( ignored );
      if ( const auto ended = std::exchange( ended_, {} ) )
         ended( response, std::move( error ) );
   }

   const std::string path_;
   stream_protocol::socket socket_;
   boost::asio::steady_timer limit_;
   LoadsAnswer ended_; // the error, or the answer
   std::string bytes_; // of the request, then of the answer
   std::array<char, 16384> chunk_{};
};

void ServerAccounts::ask( Answer answer ) const {
   askLoads(
      [answer = std::move( answer )]( const SmbusControl::Response &response, std::string error ) {
         answer( error.empty() ? Bus::loadsAsJson( {}, response ) : std::string(),
                 std::move( error ) );
      } );
}

void ServerAccounts::askLoads( LoadsAnswer answer ) const {
   SmbusControl::Request request;
   request.set_load( true );
   askFor( request, std::move( answer ) );
}

void ServerAccounts::askEvidence( EvidenceAnswer answer ) const {
   askLoads(
      [answer = std::move( answer )]( const SmbusControl::Response &response, std::string error ) {
         answer( evidenceOf( response ), std::move( error ) );
      } );
}

void ServerAccounts::addTransfers( Why why, std::function<void( const Why & )> ready ) const {
   struct Waiting {
      Why why;
      std::vector<PassedTransfer> all{};
      size_t open;
   };
   const auto busses = bussesOf( why.chips );
   if ( busses.empty() )
      return ready( why );
   const auto waiting = std::make_shared<Waiting>( Waiting{ std::move( why ), {}, busses.size() } );
   for ( const std::string &bus : busses ) {
      SmbusControl::Request request;
      request.mutable_last()->set_bus( bus );
      askFor( request, [waiting, ready]( const SmbusControl::Response &response,
                                         const std::string &error ) {
         for ( const SmbusControl::Transfer &passed : response.passed() )
            waiting->all.push_back( passedOf( passed, response.seconds() ) );
         for ( const SmbusControl::Quarantined &segment : response.quarantined() )
            if ( concerns( segment, waiting->why.chips ) )
               waiting->why.leftAlone.push_back( segment.bus() + ": " + Bus::describe( segment ) );
         if ( !error.empty() )
            waiting->why.whyNoTransfers = error;
         if ( --waiting->open > 0 )
            return;
         waiting->why.transfers = lastOf( waiting->why.chips, waiting->all );
         ready( waiting->why );
      } );
   }
}

void ServerAccounts::askFor( const SmbusControl::Request &request, LoadsAnswer ended ) const {
   if ( serverSocket_.empty() )
      return ended( {}, "the plug-in's data does not name its server's socket" );
   try {
      std::make_shared<Question>( loop_, serverSocket_ + ".control", request, ended )
         ->ask( limit_ );
   } catch ( const boost::system::system_error &wrong ) { // the path can't be that of a socket
      ended( {}, serverSocket_ + ".control: " + wrong.code().message() );
   }
}

} // namespace Host
