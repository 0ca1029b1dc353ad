#include "support/ScriptedHam.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

Transfer Transfer::answers( Bytes bytes ) const {
   Transfer t = *this;
   t.answer = std::move( bytes );
   return t;
}

Transfer Transfer::carries( Bytes bytes ) const {
   Transfer t = *this;
   t.data = std::move( bytes );
   t.length = static_cast<unsigned>( t.data.size() );
   return t;
}

Transfer Transfer::withPec() const {
   Transfer t = *this;
   t.pec = true;
   return t;
}

Transfer Transfer::fails( int failure ) const {
   Transfer t = *this;
   t.status = static_cast<pl_status>( failure );
   return t;
}

std::string Transfer::inWords() const {
   std::string words = fmt::format( "{}( 0x{:02X} ) of {}", kind, reg, length );
   if ( !data.empty() )
      words += fmt::format( " carrying 0x{:02X}", fmt::join( data, " 0x" ) );
   return pec ? words + " with PEC" : words;
}

Transfer recvByte() { return { "recvByte" }; }
Transfer read8( unsigned reg ) { return { "read8", reg, 1 }; }
Transfer read16( unsigned reg ) { return { "read16", reg, 2 }; }
Transfer read( unsigned reg, unsigned length ) { return { "read", reg, length }; }
Transfer readBlock( unsigned reg ) { return { "readBlock", reg }; }
Transfer sendByte( uint8_t byte ) { return { "sendByte", byte }; }
Transfer write8( unsigned reg, uint8_t value ) { return { "write8", reg, 1, { value } }; }
Transfer write16( unsigned reg ) { return { "write16", reg, 2 }; }
Transfer write( unsigned reg ) { return { "write", reg }; }
Transfer writeBlock( unsigned reg ) { return { "writeBlock", reg }; }
Transfer processCall( unsigned reg ) { return { "processCall", reg, 2 }; }

ScriptedHam::~ScriptedHam() { verify(); }

void ScriptedHam::expectBatch( std::vector<Transfer> transfers ) {
   expected_.push_back( std::move( transfers ) );
}

void ScriptedHam::verify() {
   for ( const auto &batch : expected_ )
      ADD_FAILURE() << "a batch of " << batch.size() << " never came: " << batch.front().inWords();
   expected_.clear();
}

void ScriptedHam::prepare() {
   batch_.clear();
   script_.clear();
}

pl_status ScriptedHam::execute() {
   ++executed_;
   if ( expected_.empty() ) {
      ADD_FAILURE() << "batch " << executed_
                    << " came unasked: " << ( batch_.empty() ? "empty" : batch_.front().inWords() );
      return PL_STATUS_TRANSACTION;
   }
   script_ = std::move( expected_.front() );
   expected_.pop_front();
   for ( size_t i = 0; i < std::max( batch_.size(), script_.size() ); ++i ) {
      const std::string wanted = i < script_.size() ? script_[i].inWords() : "nothing";
      const std::string got = i < batch_.size() ? batch_[i].inWords() : "nothing";
      if ( wanted != got )
         ADD_FAILURE() << "batch " << executed_ << ", transfer " << i + 1 << ": wanted " << wanted
                       << ", got " << got;
   }
   for ( const auto &transfer : script_ )
      if ( transfer.status != PL_STATUS_OK )
         return transfer.status;
   return PL_STATUS_OK;
}

Ham::Ham::ResponseId ScriptedHam::queue( Transfer transfer ) {
   batch_.push_back( std::move( transfer ) );
   return static_cast<ResponseId>( batch_.size() - 1 );
}

namespace {

Bytes bytesOf( void const *data, unsigned len ) {
   const auto *bytes = static_cast<uint8_t const *>( data );
   return Bytes( bytes, bytes + len );
}

Bytes lowFirst( uint16_t value ) {
   return { static_cast<uint8_t>( value ), static_cast<uint8_t>( value >> 8 ) };
}

Transfer withPecIf( bool pec, Transfer transfer ) {
   transfer.pec = pec;
   return transfer;
}

} // namespace

Ham::Ham::ResponseId ScriptedHam::addRecvByte() { return queue( ::recvByte() ); }
Ham::Ham::ResponseId ScriptedHam::addRead8( unsigned reg ) { return queue( ::read8( reg ) ); }
Ham::Ham::ResponseId ScriptedHam::addRead16( unsigned reg ) { return queue( ::read16( reg ) ); }
Ham::Ham::ResponseId ScriptedHam::addRead( unsigned reg, unsigned len ) {
   return queue( ::read( reg, len ) );
}
Ham::Ham::ResponseId ScriptedHam::addReadBlock( unsigned reg ) {
   return queue( ::readBlock( reg ) );
}
Ham::Ham::ResponseId ScriptedHam::addSendByte( uint8_t value, bool pec ) {
   return queue( withPecIf( pec, ::sendByte( value ) ) );
}
Ham::Ham::ResponseId ScriptedHam::addWrite8( unsigned reg, uint8_t value, bool pec ) {
   return queue( withPecIf( pec, ::write8( reg, value ) ) );
}
Ham::Ham::ResponseId ScriptedHam::addWrite16( unsigned reg, uint16_t value, bool pec ) {
   return queue( withPecIf( pec, ::write16( reg ).carries( lowFirst( value ) ) ) );
}
Ham::Ham::ResponseId ScriptedHam::addWrite( unsigned reg, void const *data, unsigned len,
                                            bool pec ) {
   return queue( withPecIf( pec, ::write( reg ).carries( bytesOf( data, len ) ) ) );
}
Ham::Ham::ResponseId ScriptedHam::addWriteBlock( unsigned reg, void const *data, unsigned len,
                                                 bool pec ) {
   return queue( withPecIf( pec, ::writeBlock( reg ).carries( bytesOf( data, len ) ) ) );
}
Ham::Ham::ResponseId ScriptedHam::addProcessCall( unsigned reg, uint16_t value ) {
   return queue( ::processCall( reg ).carries( lowFirst( value ) ) );
}

Bytes ScriptedHam::fetch( ResponseId id, size_t size ) {
   Bytes answer = id < script_.size() ? script_[id].answer : Bytes();
   if ( answer.size() != size )
      ADD_FAILURE() << "batch " << executed_ << ", transfer " << id + 1 << ": " << size
                    << " bytes fetched of an answer of " << answer.size();
   answer.resize( size );
   return answer;
}

uint8_t ScriptedHam::get8( ResponseId id ) { return fetch( id, 1 )[0]; }

uint16_t ScriptedHam::get16( ResponseId id ) {
   const Bytes bytes = fetch( id, 2 );
   return static_cast<uint16_t>( bytes[0] | bytes[1] << 8 );
}

// Returns the whole answer of the device and ignores the length.
std::string ScriptedHam::getBlock( ResponseId id, unsigned ) {
   const Bytes bytes = fetch( id, id < script_.size() ? script_[id].answer.size() : 1 );
   return std::string( bytes.begin(), bytes.end() );
}
