#include "orbis-smbus/Vcd.h"

#include "smbus/Pec.h"
#include "smbus/WireTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <vector>

namespace SmbusClient {

namespace {

using SmbusControl::Transfer;
using SmbusControl::Wires;

// One byte on the wires, the start before it if there is one, and the acknowledge behind it.
struct WireByte {
   bool start = false;
   std::optional<uint8_t> value{};
   bool acknowledged = true;
};

// The bytes of a transfer, in their order.
class Bytes {
 public:
   explicit Bytes( const Transfer &transfer ) : transfer_( transfer ), wires_( transfer.wires() ) {
      if ( !isReceiveByte() )
         addWritten();
      if ( reads() )
         addRead();
      cut();
   }
   const std::vector<WireByte> &list() const { return list_; }

 private:
   bool isReceiveByte() const { return wires_.kind() == Wires::READ && wires_.length() == 0; }
   bool reads() const {
      return wires_.kind() != Wires::WRITE && wires_.kind() != Wires::BLOCK_WRITE;
   }
   void add( std::optional<uint8_t> value ) {
      list_.push_back( { false, value } );
      if ( value )
         pec_ = Bus::pecStep( pec_, *value );
   }
   void start( bool read ) {
      add( static_cast<uint8_t>( transfer_.address() << 1 | ( read ? 1u : 0u ) ) );
      list_.back().start = true;
   }
   void addWritten() {
      start( false );
      for ( unsigned left = wires_.offset_bytes(); left-- > 0; )
         add( static_cast<uint8_t>( wires_.offset() >> 8 * left ) );
      if ( wires_.kind() == Wires::BLOCK_WRITE )
         add( static_cast<uint8_t>( wires_.length() ) );
      addData( transfer_.written(),
               reads() && wires_.kind() != Wires::PROCESS_CALL ? 0 : wires_.length() );
      if ( wires_.pec() && !reads() )
         add( pec_ );
   }
   void addRead() {
      start( true );
      if ( wires_.kind() == Wires::BLOCK_READ )
         add( transfer_.error().empty()
                 ? std::optional( static_cast<uint8_t>( transfer_.read().size() + wires_.cut() ) )
                 : std::nullopt );
      addData( transfer_.read(), wires_.kind() == Wires::BLOCK_READ
                                    ? transfer_.read().size() + wires_.cut()
                                    : std::max( wires_.length(), 1u ) );
      if ( wires_.pec() )
         add( transfer_.error().empty() && wires_.cut() == 0 ? std::optional( pec_ )
                                                             : std::nullopt );
      list_.back().acknowledged = false; // the master wants no more
   }
   // What is not known is so many bytes long.
   void addData( const std::string &data, size_t length ) {
      for ( size_t i = 0; i < length; ++i )
         add( i < data.size() ? std::optional( static_cast<uint8_t>( data[i] ) ) : std::nullopt );
   }
   // A transfer that failed ends with the byte that was not acknowledged.
   void cut() {
      if ( transfer_.error().empty() )
         return;
      size_t passed = list_.size();
      if ( wires_.has_bytes() )
         passed = wires_.bytes();
      else if ( transfer_.error() == Bus::noAddressAcknowledge )
         passed = 1;
      if ( passed >= list_.size() )
         return;
      list_.resize( passed );
      if ( passed > 0 )
         list_.back().acknowledged = false;
   }

   const Transfer &transfer_;
   const Wires &wires_;
   std::vector<WireByte> list_;
   uint8_t pec_ = 0;
};

struct Change {
   uint64_t time; // ns
   std::string line;
};

// Draws the two lines of one bus.
class Lines {
 public:
   Lines( size_t number, uint32_t clock, std::vector<Change> &changes )
      : scl_( nameOf( 2 * number ) ), sda_( nameOf( 2 * number + 1 ) ),
        quarter_( 250'000'000 / std::max( clock, 1u ) ), changes_( changes ) {}

   std::string define( const std::string &bus ) const {
      return fmt::format( "$scope module {} $end\n$var wire 1 {} SCL $end\n$var wire 1 {} SDA "
                          "$end\n$upscope $end\n",
                          bus, scl_, sda_ );
   }
   // A period behind the last stop.
   uint64_t end() const { return now_ + 4 * quarter_; }
   std::string atRest() const { return fmt::format( "1{}\n1{}\n", scl_, sda_ ); }

   void draw( uint64_t begun, const Bytes &bytes ) {
      if ( bytes.list().empty() )
         return;
      now_ = std::max( begun, now_ + 4 * quarter_ );
      for ( const WireByte &byte : bytes.list() ) {
         if ( byte.start )
            start();
         for ( unsigned i = 8; i-- > 0; )
            bit( byte.value ? ( *byte.value >> i & 1 ? '1' : '0' ) : 'x' );
         bit( byte.acknowledged ? '0' : '1' );
      }
      stop();
   }

 private:
   // Names of signals are printable characters.
   static std::string nameOf( size_t number ) {
      std::string name( 1, static_cast<char>( '!' + number % 90 ) );
      return number < 90 ? name : name + nameOf( number / 90 - 1 );
   }
   void set( const std::string &line, char &now, char to ) {
      if ( now != to )
         changes_.push_back( { now_, fmt::format( "{}{}", to, line ) } );
      now = to;
   }
   void sdaIs( char value ) { set( sda_, sdaNow_, value ); }
   void sclIs( char value ) { set( scl_, sclNow_, value ); }
   void quarters( unsigned count ) { now_ += count * quarter_; }

   // Each lasts for one period of the clock. A line changes a quarter before or behind the other.
   void start() {
      sdaIs( '1' );
      quarters( 1 );
      sclIs( '1' );
      quarters( 1 );
      sdaIs( '0' );
      quarters( 1 );
      sclIs( '0' );
      quarters( 1 );
   }
   void bit( char value ) {
      sdaIs( value );
      quarters( 1 );
      sclIs( '1' );
      quarters( 2 );
      sclIs( '0' );
      quarters( 1 );
   }
   void stop() {
      sdaIs( '0' );
      quarters( 1 );
      sclIs( '1' );
      quarters( 1 );
      sdaIs( '1' );
      quarters( 2 );
   }

   const std::string scl_, sda_;
   const uint64_t quarter_;
   std::vector<Change> &changes_;
   char sclNow_ = '1', sdaNow_ = '1';
   uint64_t now_ = 0; // the end of the last transfer
};

} // namespace

std::string formatVcd( const google::protobuf::RepeatedPtrField<Transfer> &transfers ) {
   std::vector<Change> changes;
   std::map<std::string, Lines> lines;
   double first = transfers.empty() ? 0 : transfers[0].seconds();
   for ( const Transfer &transfer : transfers )
      first = std::min( first, transfer.seconds() );
   for ( const Transfer &transfer : transfers ) {
      const auto [bus, isNew] =
         lines.try_emplace( transfer.bus(), lines.size(), transfer.wires().clock(), changes );
      const auto begun =
         static_cast<uint64_t>( std::llround( ( transfer.seconds() - first ) * 1e9 ) );
      bus->second.draw( begun, Bytes( transfer ) );
   }
   std::stable_sort( changes.begin(), changes.end(), []( const Change &one, const Change &other ) {
      return one.time < other.time;
   } );

   std::string text = "$timescale 1 ns $end\n";
   for ( const auto &[bus, two] : lines )
      text += two.define( bus );
   text += "$enddefinitions $end\n#0\n$dumpvars\n";
   for ( const auto &[bus, two] : lines )
      text += two.atRest();
   text += "$end\n";
   uint64_t time = 0;
   for ( const Change &change : changes ) {
      if ( change.time != time )
         text += fmt::format( "#{}\n", time = change.time );
      text += change.line + '\n';
   }
   // Readers take what comes last to last until here.
   for ( const auto &[bus, two] : lines )
      time = std::max( time, two.end() );
   return text + fmt::format( "#{}\n", time );
}

} // namespace SmbusClient
