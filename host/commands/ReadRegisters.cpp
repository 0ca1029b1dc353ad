#include "host/commands/ReadRegisters.h"

#include "host/commands/Commands.h"
#include "host/plugin/Action.h"
#include "host/session/Session.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <charconv>
#include <chrono>
#include <fmt/format.h>

namespace Host {
namespace {

// After so many failures in a row the chip isn't asked any more.
constexpr size_t mostFailures = 2;
constexpr std::chrono::seconds answerLimit( 5 );

std::vector<std::string> wordsFor( const BoardFiles::ChipRegister &what ) {
   return { what.bytes == 2 ? "read-word" : "read-byte", fmt::format( "{:#04x}", what.number ) };
}

// "0x2848", as an SMBus object gives what it has read.
std::optional<int64_t> numberIn( const Reading &result ) {
   const auto *text = std::get_if<std::string>( &result.value );
   int64_t number = 0;
   if ( !text || !text->starts_with( "0x" ) )
      return {};
   const char *end = text->data() + text->size();
   const auto read = std::from_chars( text->data() + 2, end, number, 16 );
   return read.ec == std::errc() && read.ptr == end ? std::optional( number ) : std::nullopt;
}

void take( RegisterReading &reading, const Reading &result ) {
   const auto value = numberIn( result );
   if ( result.state != State::Ok || !value )
      reading.error =
         result.fault == Fault() ? std::string( nameOf( result.state ) ) : toText( result.fault );
   else if ( reading.what.highByteFirst )
      reading.value = ( *value & 0xFF ) << 8 | ( *value >> 8 & 0xFF );
   else
      reading.value = *value;
}

// Whether the chip has to be asked for the register behind the first `read`. If it isn't, those
// that were not read are taken away.
bool goesOn( ChipReadings &chip, size_t read ) {
   size_t failures = 0;
   for ( size_t i = read; i-- > 0 && !chip.registers[i].value; )
      ++failures;
   if ( failures < mostFailures )
      return read < chip.registers.size();
   chip.registers.resize( read );
   if ( failures == read ) { // none could be read
      chip.whyNone = "they can't be read: " + chip.registers.back().error;
      chip.registers.clear();
   }
   return false;
}

// Brings up one SMBus object and reads one register after the other through it.
class RegisterSession {
 public:
   RegisterSession( const BoardFiles::Board &board, const Options &options, size_t object,
                    ChipReadings &chip )
      : object_( object ), chip_( chip ),
        session_( loop_, board, options.plugin,
                  Limits{ .init = initLimit, .step = fromSeconds( options.limit ), .only = object },
                  logging( options, [this] {
                     if ( session_.supervisor().loadFault() )
                        end( toText( *session_.supervisor().loadFault() ) );
                  } ) ) {}

   void run() {
      giveUp_.expires_after( totalLimit );
      giveUp_.async_wait( [this]( const auto &failure ) {
         if ( !failure )
            end( fmt::format( "gave up after {} s", totalLimit.count() ) );
      } );
      boost::asio::post( loop_, [this] { next(); } );
      loop_.run();
   }

 private:
   void next() {
      if ( !goesOn( chip_, read_ ) )
         return loop_.stop();
      const auto action =
         parseAction( BoardFiles::Kind::Smbus, wordsFor( chip_.registers[read_].what ) );
      session_.ask( object_, std::get<Action>( action ), [this]( const Reading &result ) {
         take( chip_.registers[read_++], result );
         boost::asio::post( loop_, [this] { next(); } );
      } );
   }
   void end( const std::string &why ) {
      chip_.registers.resize( read_ );
      chip_.whyNone = why;
      loop_.stop();
   }

   const size_t object_;
   ChipReadings &chip_;
   size_t read_ = 0;
   boost::asio::io_context loop_{ 1 };
   boost::asio::steady_timer giveUp_{ loop_ };
   Session session_;
};

void readThrough( const Client &serve, ChipReadings &chip ) {
   for ( size_t read = 0; goesOn( chip, read ); ++read )
      take( chip.registers[read],
            serve.act( chip.through, wordsFor( chip.registers[read].what ), answerLimit ) );
}

} // namespace

void readRegisters( const BoardFiles::Board &board, const Options &options,
                    const std::optional<Client> &serve, std::vector<ChipReadings> &chips ) {
   for ( ChipReadings &chip : chips ) {
      if ( !chip.whyNone.empty() )
         continue;
      if ( serve ) {
         readThrough( *serve, chip );
         continue;
      }
      for ( size_t i = 0; i < board.objects.size(); ++i )
         if ( board.objects[i].name == chip.through )
            RegisterSession( board, options, i, chip ).run();
   }
}

} // namespace Host
