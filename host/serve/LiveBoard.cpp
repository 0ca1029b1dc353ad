#include "host/serve/LiveBoard.h"

#include "host/JsonWriter.h"
#include "host/Times.h"
#include "host/journal/EventJson.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace Host {
namespace {

// Since one of its values was read. Nothing: it was never read, or there is nothing to read.
std::optional<double> ageOf( const ObjectReport &object ) {
   std::optional<double> age;
   if ( object.state == State::Absent || object.state == State::Stale )
      age = object.age;
   for ( const ValueReport &value : object.values )
      age = std::min( age.value_or( value.age ), value.age );
   return age;
}

std::string agesOf( const BoardReport &report ) {
   JsonWriter json;
   json.beginList();
   for ( const ObjectReport &object : report ) {
      const auto age = ageOf( object );
      age ? json.value( std::round( *age * 10 ) / 10 ) : json.value( std::monostate() );
   }
   return json.endList().text();
}

std::string textOf( const std::vector<Health::Cause> &causes ) {
   JsonWriter json;
   json.beginList();
   for ( const Health::Cause &cause : causes )
      json.cause( cause );
   return json.endList().text();
}

void addList( JsonWriter &json, const char *name, const std::vector<std::string> &objects ) {
   json.key( name ).beginList();
   for ( const std::string &object : objects )
      json.raw( object );
   json.endList();
}

// Those that are not the same as before.
std::vector<std::string> newOf( const std::vector<std::string> &before,
                                const std::vector<std::string> &now ) {
   std::vector<std::string> all;
   for ( size_t i = 0; i < now.size(); ++i )
      if ( i >= before.size() || now[i] != before[i] )
         all.push_back( now[i] );
   return all;
}

// The last ones up to `last`, oldest first.
std::vector<std::string> textsOf( std::vector<Health::Event> newestFirst, uint64_t last ) {
   std::vector<std::string> texts;
   for ( auto event = newestFirst.rbegin(); event != newestFirst.rend(); ++event )
      if ( event->id <= last )
         texts.push_back( toJson( *event ) );
   return texts;
}

} // namespace

bool LiveBoard::tick() {
   std::erase_if( listeners_, []( const auto &listener ) { return listener.expired(); } );
   if ( listeners_.empty() ) {
      told_.reset();
      busses_ = {};
      return false;
   }
   look();
   for ( const auto &listener : std::vector( listeners_ ) ) // one may end others
      if ( const auto there = listener.lock() )
         ( *there )();
   return true;
}

const std::string &LiveBoard::all() {
   if ( !told_ )
      look();
   if ( !all_.empty() )
      return all_;
   JsonWriter json;
   json.beginObject().member( "board", name_ ).member( "time", told_->time );
   json.member( "control", source_.canAct ).member( "fault", told_->fault );
   json.member( "level", told_->level );
   addList( json, "objects", told_->objects );
   json.key( "ages" ).raw( told_->ages ).key( "causes" ).raw( told_->causes );
   addList( json, "busses", told_->busses );
   json.member( "bussesFault", told_->bussesFault );
   addList(
      json, "events",
      textsOf( source_.events( { .limit = mostEvents, .newestFirst = true } ), told_->lastEvent ) );
   // A browser whose connection is lost tries again after a second.
   all_ = fmt::format( "retry: 1000\nevent: all\ndata: {}\n\n", json.endObject().text() );
   return all_;
}

void LiveBoard::look() {
   Told news = now();
   all_.clear();
   if ( told_ )
      write( *told_, news );
   told_ = std::move( news );
   // Every other time, since its answer is about all that passes there.
   if ( ++turn_ % 2 == 1 || busses_.json().empty() )
      askBusses();
}

LiveBoard::Told LiveBoard::now() const {
   const BoardReport report = source_.report();
   Told now{ .time = timeText(
                std::chrono::floor<std::chrono::milliseconds>( std::chrono::system_clock::now() ) ),
             .fault = source_.fault(),
             .level = nameOf( source_.level() ),
             .ages = agesOf( report ),
             .causes = textOf( source_.causes() ),
             .busses = busses_.json(),
             .bussesFault = bussesFault_,
             .lastEvent = source_.lastEvent() };
   for ( const ObjectReport &object : report ) {
      JsonWriter json;
      json.beginObject().members( object, JsonWriter::Detail::Lasting ).endObject();
      now.objects.push_back( json.text() );
   }
   return now;
}

void LiveBoard::write( const Told &before, const Told &now ) {
   JsonWriter json;
   json.beginObject().member( "time", now.time ).member( "fault", now.fault );
   json.member( "level", now.level ).key( "ages" ).raw( now.ages );
   if ( const auto objects = newOf( before.objects, now.objects ); !objects.empty() )
      addList( json, "objects", objects );
   if ( now.causes != before.causes )
      json.key( "causes" ).raw( now.causes );
   if ( const auto busses = newOf( before.busses, now.busses ); !busses.empty() )
      addList( json, "busses", busses );
   if ( now.bussesFault != before.bussesFault )
      json.member( "bussesFault", now.bussesFault );
   if ( now.lastEvent > before.lastEvent )
      addList(
         json, "events",
         textsOf( source_.events(
                     { .after = before.lastEvent, .limit = mostEvents, .newestFirst = true } ),
                  now.lastEvent ) );
   news_ = fmt::format( "event: news\ndata: {}\n\n", json.endObject().text() );
}

void LiveBoard::askBusses() {
   if ( std::exchange( asks_, true ) )
      return;
   source_.askLoads( [this]( const SmbusControl::Response &loads, const std::string &error ) {
      asks_ = false;
      bussesFault_ = error;
      if ( error.empty() )
         busses_.told( loads );
   } );
}

namespace {

class LiveStream : public Http::Stream {
 public:
   explicit LiveStream( LiveBoard &board ) : board_( board ) {}

   void start( std::function<void()> news ) override {
      listener_ = std::make_shared<LiveBoard::Listener>( std::move( news ) );
      board_.tell( listener_ );
   }

   std::string next() override {
      if ( told_ && *told_ == board_.turn() )
         return "";
      const bool isNext = told_ && *told_ + 1 == board_.turn();
      std::string text = isNext ? board_.news() : board_.all();
      told_ = board_.turn();
      return text;
   }

 private:
   LiveBoard &board_;
   std::optional<uint64_t> told_{}; // the turn
   std::shared_ptr<LiveBoard::Listener> listener_{};
};

} // namespace

std::shared_ptr<Http::Stream> liveStreamOf( LiveBoard &board ) {
   return std::make_shared<LiveStream>( board );
}

} // namespace Host
