#include "simulator/bus/SimulatedBus.h"

#include "simulator/bus/Cycle.h"

#include <fmt/format.h>

#include <optional>
#include <thread>

namespace Simulator {

namespace {

void write( Cycle &cycle, const std::string &data ) {
   for ( size_t i = 0; i < data.size(); ++i ) {
      if ( !cycle.write( static_cast<uint8_t>( data[i] ) ) )
         throw BusFault(
            fmt::format( "no acknowledge of data byte {} of {}", i + 1, data.size() ) );
   }
}

const Faults &faultsOf( const Cycle &cycle ) { return cycle.answering()->faults(); }

std::string read( Cycle &cycle, unsigned count ) {
   std::string data;
   data.reserve( count );
   while ( count-- > 0 )
      data += static_cast<char>( cycle.read() );
   return data;
}

void sendPec( Cycle &cycle ) {
   const uint8_t inverted = faultsOf( cycle ).badPec ? 0xFF : 0x00;
   if ( !cycle.write( cycle.pec() ^ inverted ) )
      throw BusFault( "no acknowledge of the PEC" );
}

void checkPec( Cycle &cycle ) {
   const uint8_t expected = cycle.pec();
   const auto got =
      static_cast<uint8_t>( cycle.read() ^ ( faultsOf( cycle ).badPec ? 0xFF : 0x00 ) );
   if ( got != expected )
      throw BusFault( fmt::format( "PEC is {:#04x}, expected {:#04x}", got, expected ) );
}

unsigned blockCount( Cycle &cycle ) {
   const uint8_t sent = cycle.read();
   return faultsOf( cycle ).blockCount.value_or( sent );
}

// Applies the chip's faults to the data that it returns.
void distort( std::string &answer, const Bus::Transfer &transfer, const Faults &faults ) {
   const auto corrupted = faults.corrupted.find( transfer.offset );
   if ( corrupted != faults.corrupted.end() && !answer.empty() )
      answer[0] = static_cast<char>( answer[0] ^ corrupted->second );
   if ( faults.answerSize && ( transfer.kind == Bus::Transfer::Kind::Read ||
                               transfer.kind == Bus::Transfer::Kind::BlockRead ) )
      answer.resize( *faults.answerSize );
}

// The SMBus protocols up to the stop. Returns the data that was read.
std::string execute( Cycle &cycle, const Bus::Transfer &transfer ) {
   std::string answer;
   if ( transfer.isReceiveByte() ) {
      cycle.start( Direction::Read );
      answer = read( cycle, 1 );
   } else {
      cycle.start( Direction::Write );
      cycle.command( transfer.offset );
   }
   bool reads = true;
   switch ( transfer.kind ) {
   case Bus::Transfer::Kind::Read:
      if ( transfer.length > 0 ) {
         cycle.start( Direction::Read );
         answer = read( cycle, transfer.length );
      }
      break;
   case Bus::Transfer::Kind::ProcessCall:
      write( cycle, transfer.data );
      cycle.start( Direction::Read );
      answer = read( cycle, transfer.length );
      break;
   case Bus::Transfer::Kind::BlockRead:
      cycle.start( Direction::Read );
      answer = read( cycle, blockCount( cycle ) );
      break;
   case Bus::Transfer::Kind::BlockWrite:
      if ( !cycle.write( static_cast<uint8_t>( transfer.length ) ) )
         throw BusFault( "no acknowledge of the block count" );
      [[fallthrough]];
   case Bus::Transfer::Kind::Write:
      write( cycle, transfer.data );
      reads = false;
      break;
   }
   if ( transfer.pec )
      reads ? checkPec( cycle ) : sendPec( cycle );
   distort( answer, transfer, faultsOf( cycle ) );
   return answer;
}

// The first bytes are the chip's command; the chip says how many.
void write( Cycle &cycle, std::string_view bytes, uint32_t &command ) {
   const size_t width = cycle.answering()->commandBytes();
   if ( bytes.size() >= width ) {
      command = 0;
      for ( const char byte : bytes.substr( 0, width ) )
         command = command << 8 | static_cast<uint8_t>( byte );
      cycle.command( command );
      bytes.remove_prefix( width );
   }
   for ( const char byte : bytes ) {
      if ( !cycle.write( static_cast<uint8_t>( byte ) ) )
         throw BusFault( "no acknowledge of a byte" );
   }
}

// The transfer that is nearest to these messages, for the observer.
Bus::Transfer transferOf( const std::vector<BusMessage> &messages, uint32_t command ) {
   const BusMessage &last = messages.back();
   Bus::Transfer transfer{ .address = last.address, .offset = command };
   if ( last.direction == Direction::Write ) {
      transfer.kind = Bus::Transfer::Kind::Write;
      transfer.data = last.bytes.empty() ? "" : last.bytes.substr( 1 );
      transfer.length = static_cast<unsigned>( transfer.data.size() );
   } else {
      transfer.length = messages.size() > 1 ? static_cast<unsigned>( last.bytes.size() ) : 0;
   }
   return transfer;
}

} // namespace

void SimulatedBus::exchange( Cycle &cycle, BusMessage &message, uint32_t &command,
                             Result &result ) {
   const unsigned before = cycle.bytes();
   const auto record = [&] {
      result.answering = cycle.answering();
      *result.outcome.bytes += cycle.bytes() - before;
   };
   try {
      cycle.start( message.direction );
      if ( message.direction == Direction::Write )
         write( cycle, message.bytes, command );
      else
         message.bytes = read( cycle, static_cast<unsigned>( message.bytes.size() ) );
   } catch ( const BusFault & ) {
      record();
      throw;
   }
   record();
   if ( const std::string collision = cycle.collision(); !collision.empty() )
      throw BusFault( collision );
}

SimulatedBus::Result SimulatedBus::exchangeOnce( std::vector<BusMessage> &messages,
                                                 uint32_t &command ) {
   Result result;
   try {
      std::optional<Cycle> cycle;
      uint8_t address = 0;
      for ( BusMessage &message : messages ) {
         // For a chip that is not addressed again, this is like a stop.
         if ( !cycle || message.address != address )
            cycle.emplace( segment_, address = message.address, chips_ );
         exchange( *cycle, message, command, result );
      }
      if ( messages.back().direction == Direction::Read )
         result.outcome.data = messages.back().bytes;
   } catch ( const BusFault &fault ) {
      result.outcome.error = fault.what();
   }
   return result;
}

bool SimulatedBus::exchange( std::vector<BusMessage> &messages ) {
   std::chrono::milliseconds slow{ 0 };
   Result result;
   {
      const std::lock_guard lock( mutex_ );
      uint32_t command = 0;
      result = exchangeOnce( messages, command );
      if ( result.answering )
         slow = result.answering->faults().slow;
      if ( observer_ )
         observer_( transferOf( messages, command ), result );
   }
   std::this_thread::sleep_for( slow );
   return result.outcome.ok();
}

SimulatedBus::Result SimulatedBus::executeOnce( const Bus::Transfer &transfer ) {
   Result result;
   try {
      Cycle cycle( segment_, transfer.address, chips_ );
      try {
         result.outcome.data = execute( cycle, transfer );
      } catch ( const BusFault &fault ) {
         result.outcome.error = fault.what();
      }
      result.answering = cycle.answering();
      if ( const std::string collision = cycle.collision(); !collision.empty() )
         result.outcome = { {}, collision };
      result.outcome.bytes = cycle.bytes();
   } catch ( const BusFault &fault ) {
      result.outcome.error = fault.what();
   }
   return result;
}

bool SimulatedBus::clearLines() {
   const std::lock_guard lock( mutex_ );
   segment_.clock();
   return true;
}

bool SimulatedBus::resetMux( uint8_t address ) {
   const std::lock_guard lock( mutex_ );
   return segment_.resetMuxes( address );
}

Bus::Outcome SimulatedBus::transfer( const Bus::Transfer &transfer ) {
   std::chrono::milliseconds slow{ 0 };
   Result result;
   {
      const std::lock_guard lock( mutex_ );
      result = executeOnce( transfer );
      if ( result.answering )
         slow = result.answering->faults().slow;
      if ( observer_ )
         observer_( transfer, result );
   }
   std::this_thread::sleep_for( slow ); // without the mutex, so that other busses continue
   return result.outcome;
}

} // namespace Simulator
