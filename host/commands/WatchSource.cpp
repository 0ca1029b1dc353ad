#include "host/commands/WatchSource.h"

#include "boardfiles/Json.h"
#include "host/JsonReader.h"
#include "host/serve/ModuleJson.h"
#include "host/session/ServerProbe.h"
#include "http/Query.h"

#include <algorithm>
#include <fmt/format.h>
#include <sockets/SocketFile.h>

namespace Host {
namespace {

// A service that is started anew is back sooner.
constexpr unsigned periodsOfPatience = 10;
// Modules are read less often than the rest.
constexpr unsigned roundsOfModules = 5;

double secondsSince( Time time ) {
   return std::chrono::duration<double>( Clock::now() - time ).count();
}

// The numbers of each value, of an answer to /v1/history.
NumbersByValue readHistory( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "history", findings );
   NumbersByValue numbers;
   if ( !json )
      return numbers;
   for ( const BoardFiles::Json &value : json->elementsOf( "values" ) )
      for ( const BoardFiles::Json &reading : value.elementsOf( "readings" ) )
         if ( const auto number =
                 reading.elements().size() == 2 ? reading.elements()[1].toNumber() : std::nullopt )
            numbers[value.textOf( "name" ).value_or( "" )].push_back( *number );
   return numbers;
}

} // namespace

WatchSource::WatchSource( const BoardFiles::Board &board, const Options &options,
                          CommandSession &session, std::function<void()> news )
   : board_( board ), session_( session ), news_( std::move( news ) ),
     patience_( fromSeconds( periodsOfPatience * options.period ) ),
     accounts_( session.loop(), serverSocket( board.server ) ),
     health_( board, accounts_, std::max( 3.0, 3 * options.period ), []( const auto & ) {} ),
     at_( Clock::now() ) {
   known_.board = board.folder;
   if ( session.serve() )
      serve_ = session.serve()->socket().string();
}

void WatchSource::refresh( const std::string &object ) {
   if ( session_.serve() || ( !serve_.empty() && session_.returnToServe() ) )
      askServe( object );
   else
      look( object );
}

void WatchSource::askServe( const std::string &object ) {
   if ( open_ > 0 )
      return;
   if ( !isWhole_ && Clock::now() - at_ > patience_ && Sockets::tryToConnect( serve_ ) != 0 ) {
      session_.leaveServe();
      return;
   }
   isMissing_ = false;
   ask( "/v1/board", [this]( const std::string &text ) {
      if ( auto board = readBoard( text ) )
         known_.objects = std::move( board->objects );
      else
         isMissing_ = true;
   } );
   ask( "/v1/health", [this]( const std::string &text ) {
      if ( auto health = readHealth( text ) )
         known_.health = std::move( *health );
   } );
   if ( round_++ % roundsOfModules == 0 )
      ask( "/v1/modules",
           [this]( const std::string &text ) { known_.modules = readModules( text ); } );
   ask( "/v1/busses", [this]( const std::string &text ) {
      BoardFiles::Findings findings;
      const auto json = BoardFiles::parseJson( text, "busses", findings );
      takeBusses( text, json ? json->textOf( "error" ).value_or( "" ) : "" );
   } );
   if ( object.empty() || ( known_.detail && known_.detail->name != object ) ) {
      known_.detail.reset();
      known_.history.clear();
   }
   if ( !object.empty() ) {
      ask( "/v1/history?since=10m&step=reading&object=" + Http::urlEncoded( object ),
           [this]( const std::string &text ) { known_.history = readHistory( text ); } );
      ask( "/v1/objects/" + object, [this]( const std::string &text ) {
         BoardFiles::Findings findings;
         if ( const auto json = BoardFiles::parseJson( text, "object", findings ) )
            known_.detail = toObject( *json );
      } );
   }
}

void WatchSource::ask( const std::string &path,
                       std::function<void( const std::string & )> answered ) {
   ++open_;
   session_.serve()->ask( session_.loop(), path,
                          [this, take = std::move( answered )]( const auto &text ) {
                             if ( text )
                                take( *text );
                             else
                                isMissing_ = true;
                             if ( --open_ == 0 )
                                this->answered();
                          } );
}

void WatchSource::answered() {
   isWhole_ = !isMissing_;
   if ( isWhole_ )
      at_ = Clock::now();
   news_();
}

void WatchSource::look( const std::string &object ) {
   known_.modules.reset();
   known_.objects = session_.report();
   // Without its server nothing is ever read once.
   if ( session_.hadRound() || !whyNoServer( board_.server ).empty() ) {
      for ( size_t i = 0; i < board_.objects.size(); ++i )
         if ( const auto &limits = session_.limits( i ); !limits.empty() )
            health_.knows( i, limits );
      health_.look( known_.objects, session_.plugInFault() );
   }
   health_.monitor().describe( known_.objects );
   known_.health = healthOf( health_.monitor(), known_.objects );
   known_.detail.reset();
   for ( size_t i = 0; i < known_.objects.size(); ++i )
      if ( known_.objects[i].name == object ) {
         known_.detail = known_.objects[i];
         health_.monitor().addLast( i, *known_.detail );
      }
   at_ = Clock::now();
   isWhole_ = true;
   if ( open_++ == 0 )
      accounts_.ask( [this]( const std::string &json, const std::string &error ) {
         open_ = 0;
         takeBusses( json, error );
         news_();
      } );
   news_();
}

void WatchSource::takeBusses( const std::string &json, const std::string &error ) {
   known_.whyNoBusses = error;
   known_.busses.clear();
   if ( const auto now = error.empty() ? readBusses( json ) : std::nullopt ) {
      known_.busses = useBetween( busses_, *now );
      busses_ = now;
   }
}

std::string WatchSource::trouble( double age ) const {
   if ( !serve_.empty() && !session_.serve() )
      return session_.hadRound()
                ? fmt::format( "the serve at {} has ended: this command reads the board itself",
                               serve_ )
                : fmt::format( "the serve at {} has ended: this command brings the board up itself",
                               serve_ );
   return isWhole_ ? ""
                   : fmt::format( "the serve at {} doesn't answer: all of this is {:.0f} s old; it "
                                  "is asked again",
                                  serve_, age );
}

Snapshot WatchSource::snapshot() const {
   Snapshot snapshot = known_;
   snapshot.older = secondsSince( at_ );
   snapshot.now = instantNow().wall;
   snapshot.trouble = trouble( snapshot.older );
   return snapshot;
}

} // namespace Host
