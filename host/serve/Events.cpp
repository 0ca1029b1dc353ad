#include "host/serve/Events.h"

#include "host/journal/EventText.h"

#include <spdlog/spdlog.h>

namespace Host {
namespace {

spdlog::level::level_enum logLevelOf( const Health::Event &event ) {
   if ( event.what != Health::Event::What::Set || event.level == Health::Level::Ok )
      return spdlog::level::info;
   return event.level == Health::Level::Critical ? spdlog::level::err : spdlog::level::warn;
}

} // namespace

Events::Events( std::filesystem::path file, SystemLog systemLog, Clock::duration retry )
   : file_( std::move( file ) ), retry_( retry ), systemLog_( std::move( systemLog ) ) {
   try {
      journal_.emplace( openFile() );
      lastId_ = journal_->lastId();
   } catch ( const std::exception &error ) { // also of the system, from putting it aside
      goOnInMemory( error.what() );
   }
}

void Events::add( std::vector<Health::Event> events ) {
   if ( events.empty() )
      return;
   if ( nextTry_ && Clock::now() >= *nextTry_ )
      tryFileAgain();
   try {
      journal_->add( events );
   } catch ( const Sqlite::Error &error ) {
      goOnInMemory( error.what() );
      journal_->add( events );
   }
   lastId_ = events.back().id;
   for ( const Health::Event &event : events ) {
      ++counts_[{ event.what, event.level }];
      log( event );
   }
   std::erase_if( listeners_, []( const auto &listener ) { return listener.expired(); } );
   for ( const auto &listener : listeners_ )
      if ( const auto there = listener.lock() )
         ( *there )();
}

Journal Events::openFile() const {
   Journal journal( file_ );
   if ( !journal.notice().empty() )
      spdlog::warn( "{}", journal.notice() );
   return journal;
}

// With what is not in the file; usually it gets the same ids there.
void Events::tryFileAgain() {
   try {
      Journal journal = openFile();
      std::vector<Health::Event> waiting = journal_->events( { .after = lastInFile_ } );
      journal.add( waiting );
      journal_.emplace( std::move( journal ) );
      nextTry_.reset();
      spdlog::info( "the events are kept in {} again", file_.string() );
   } catch ( const std::exception & ) { // known since the first try
      nextTry_ = Clock::now() + retry_;
   }
}

// With the events that are known, under their ids.
void Events::goOnInMemory( const std::string &why ) {
   spdlog::warn( "{}; events are kept in memory, and are lost when serve ends", why );
   nextTry_ = Clock::now() + retry_;
   lastInFile_ = lastId_;
   std::vector<Health::Event> known;
   if ( journal_ )
      known = events( {} );
   journal_.emplace( Journal::inMemory( known.empty() ? lastId_ : known.front().id - 1 ) );
   journal_->add( known );
}

std::vector<Health::Event> Events::events( const Journal::Query &query ) const {
   try {
      return journal_->events( query );
   } catch ( const Sqlite::Error &error ) {
      spdlog::warn( "the events can't be read: {}", error.what() );
      return {};
   }
}

void Events::tell( const std::shared_ptr<Listener> &listener ) { listeners_.push_back( listener ); }

void Events::log( const Health::Event &event ) const {
   if ( !systemLog_ || !systemLog_( event ) )
      spdlog::log( logLevelOf( event ), "{}: {}", kindOf( event ), textOf( event ) );
}

} // namespace Host
