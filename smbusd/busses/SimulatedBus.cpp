#include "busses/SimulatedBus.h"

#include "busses/Cycle.h"

#include <fmt/format.h>

namespace Smbusd {

namespace {

void write( Cycle &cycle, const std::string &data ) {
   for ( size_t i = 0; i < data.size(); ++i ) {
      if ( !cycle.write( static_cast<uint8_t>( data[i] ) ) )
         throw BusFault(
            fmt::format( "no acknowledge of data byte {} of {}", i + 1, data.size() ) );
   }
}

std::string read( Cycle &cycle, unsigned count ) {
   std::string data;
   data.reserve( count );
   while ( count-- > 0 )
      data += static_cast<char>( cycle.read() );
   return data;
}

void sendPec( Cycle &cycle ) {
   if ( !cycle.write( cycle.pec() ) )
      throw BusFault( "no acknowledge of the PEC" );
}

void checkPec( Cycle &cycle ) {
   const uint8_t due = cycle.pec();
   const uint8_t got = cycle.read();
   if ( got != due )
      throw BusFault( fmt::format( "PEC {:#04x} where {:#04x} is due", got, due ) );
}

// The SMBus protocols as bus cycles, up to the stop. What was read.
std::string carryOut( Cycle &cycle, const Transfer &transfer ) {
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
   case Transfer::Kind::Read:
      if ( transfer.length > 0 ) {
         cycle.start( Direction::Read );
         answer = read( cycle, transfer.length );
      }
      break;
   case Transfer::Kind::ProcessCall:
      write( cycle, transfer.data );
      cycle.start( Direction::Read );
      answer = read( cycle, transfer.length );
      break;
   case Transfer::Kind::BlockRead:
      cycle.start( Direction::Read );
      answer = read( cycle, cycle.read() );
      break;
   case Transfer::Kind::BlockWrite:
      if ( !cycle.write( static_cast<uint8_t>( transfer.length ) ) )
         throw BusFault( "no acknowledge of the block count" );
      [[fallthrough]];
   case Transfer::Kind::Write:
      write( cycle, transfer.data );
      reads = false;
      break;
   }
   if ( transfer.pec )
      reads ? checkPec( cycle ) : sendPec( cycle );
   return answer;
}

} // namespace

Outcome SimulatedBus::transfer( const Transfer &transfer ) {
   const std::lock_guard lock( mutex_ );
   Cycle cycle( wire_, transfer.address );
   Outcome outcome;
   try {
      outcome.data = carryOut( cycle, transfer );
   } catch ( const BusFault &fault ) {
      outcome.error = fault.what();
   }
   if ( const std::string collision = cycle.collision(); !collision.empty() )
      outcome = { {}, collision };
   return outcome;
}

} // namespace Smbusd
