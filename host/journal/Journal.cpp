#include "host/journal/Journal.h"

#include "host/journal/EventJson.h"

#include <algorithm>
#include <fmt/format.h>

namespace Host {
namespace {

namespace fs = std::filesystem;
using Kind = Sqlite::Error::Kind;

constexpr int64_t applicationId = 0x4F72'624A; // "OrbJ"
constexpr int64_t version = 1;

// The object stands beside the event's JSON for the queries.
constexpr auto makeTables = "BEGIN IMMEDIATE;"
                            "CREATE TABLE event( id INTEGER PRIMARY KEY AUTOINCREMENT,"
                            " time INTEGER NOT NULL, object TEXT NOT NULL, json TEXT NOT NULL );"
                            "PRAGMA application_id = 1332896330;"
                            "PRAGMA user_version = 1;"
                            "COMMIT";
static_assert( applicationId == 1332896330 && version == 1 );

[[noreturn]] void refuse( const fs::path &file, const char *why ) {
   throw Sqlite::Error( Kind::Other, fmt::format( "{}: {}", file.string(), why ) );
}

bool isNew( const Sqlite::Database &database ) {
   return database.number( "PRAGMA application_id" ) == 0 &&
          database.number( "SELECT count(*) FROM sqlite_schema" ) == 0;
}

std::string lastLineOf( const std::string &text ) { return text.substr( text.rfind( '\n' ) + 1 ); }

// Throws for what is not a journal, or one that is not whole.
void check( const Sqlite::Database &database, const fs::path &file ) {
   if ( database.number( "PRAGMA application_id" ) != applicationId )
      refuse( file, "this is not a journal of events" );
   if ( database.number( "PRAGMA user_version" ) > version )
      refuse( file, "a newer version of orbis-host has written this journal" );
   if ( const std::string found = database.text( "PRAGMA quick_check( 1 )" ); found != "ok" )
      throw Sqlite::Error( Kind::Damaged,
                           fmt::format( "{}: {}", file.string(), lastLineOf( found ) ) );
}

Sqlite::Database opened( const fs::path &file, Sqlite::Database::Use use ) {
   try {
      Sqlite::Database database( file, use );
      if ( use != Sqlite::Database::Use::Write || !isNew( database ) )
         check( database, file );
      return database;
   } catch ( const Sqlite::Error &error ) {
      if ( error.kind() == Kind::NoDatabase )
         refuse( file, "this is not a journal of events" );
      throw;
   }
}

// The first name that is free.
fs::path nameAside( const fs::path &file ) {
   fs::path aside = file.string() + ".damaged";
   for ( int number = 2; fs::exists( aside ); ++number )
      aside = fmt::format( "{}.damaged-{}", file.string(), number );
   return aside;
}

// With the changes that are not in the file yet. Returns its new name.
fs::path putAside( const fs::path &file ) {
   fs::path aside = nameAside( file );
   fs::rename( file, aside );
   std::error_code isNotThere;
   fs::rename( file.string() + "-wal", aside.string() + "-wal", isNotThere );
   fs::remove( file.string() + "-shm", isNotThere );
   return aside;
}

Sqlite::Database openedOrReplaced( const fs::path &file, std::string &notice ) {
   try {
      return opened( file, Sqlite::Database::Use::Write );
   } catch ( const Sqlite::Error &error ) {
      if ( error.kind() != Kind::Damaged )
         throw;
      notice = fmt::format( "the journal of events is damaged ({}) and is now {}; a new one begins",
                            error.what(), putAside( file ).string() );
   }
   return opened( file, Sqlite::Database::Use::Write );
}

// Nobody knows what the last id of a damaged journal was. A board has fewer events than seconds, so
// that an id which is the time comes behind it.
uint64_t behindAllOthers() {
   return static_cast<uint64_t>(
      std::chrono::system_clock::to_time_t( std::chrono::system_clock::now() ) );
}

int64_t toMilliseconds( Health::WallTime time ) { return time.time_since_epoch().count(); }

} // namespace

Journal::Journal( Sqlite::Database database, size_t capacity )
   : database_( std::move( database ) ), capacity_( capacity ) {}

Journal::Journal( const fs::path &file, size_t capacity )
   : database_( openedOrReplaced( file, notice_ ) ), capacity_( capacity ) {
   // An event is on the disk when add() returns: it may be the last one before the power fails.
   database_.run( "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL" );
   if ( isNew( database_ ) )
      make( notice_.empty() ? 0 : behindAllOthers() );
}

Journal Journal::inMemory( uint64_t last, size_t capacity ) {
   Journal journal( Sqlite::Database( {}, Sqlite::Database::Use::Write ), capacity );
   journal.make( last );
   return journal;
}

Journal Journal::toRead( const fs::path &file ) {
   try {
      return { opened( file, Sqlite::Database::Use::Read ), usualCapacity };
   } catch ( const Sqlite::Error & ) {
      // Who may not make files beside it can read it only if no changes are waiting there.
      if ( !fs::exists( file ) || fs::exists( file.string() + "-wal" ) )
         throw;
   }
   return { opened( file, Sqlite::Database::Use::ReadAlone ), usualCapacity };
}

void Journal::make( uint64_t last ) {
   database_.run( makeTables );
   if ( last > 0 )
      Sqlite::Statement( database_,
                         "INSERT INTO sqlite_sequence( name, seq ) VALUES( 'event', ? )" )
         .bind( static_cast<int64_t>( last ) )
         .step();
}

void Journal::add( std::vector<Health::Event> &events ) {
   std::vector<Health::Event> added = events;
   database_.run( "BEGIN IMMEDIATE" );
   try {
      Sqlite::Statement insert( database_,
                                "INSERT INTO event( time, object, json ) VALUES( ?, ?, ? ) "
                                "RETURNING id" );
      for ( Health::Event &event : added ) {
         event.id = 0;
         insert.bind( toMilliseconds( event.time ) ).bind( event.object ).bind( toJson( event ) );
         while ( insert.step() )
            event.id = static_cast<uint64_t>( insert.number( 0 ) );
      }
      Sqlite::Statement( database_,
                         "DELETE FROM event WHERE id <= ( SELECT max( id ) FROM event ) - ?" )
         .bind( static_cast<int64_t>( capacity_ ) )
         .step();
      database_.run( "COMMIT" );
   } catch ( const Sqlite::Error & ) {
      try {
         database_.run( "ROLLBACK" );
      } catch ( const Sqlite::Error & ) { // SQLite has done it already
      }
      throw;
   }
   events = std::move( added );
}

std::vector<Health::Event> Journal::events( const Query &query ) const {
   const std::string sql = fmt::format(
      "SELECT id, json FROM event WHERE id > ?1 AND time >= ?2 AND "
      "( ?3 = '' OR object = ?3 OR "
      "EXISTS ( SELECT 1 FROM json_each( event.json, '$.explains' ) WHERE value = ?3 ) ) "
      "ORDER BY id {} LIMIT ?4",
      query.newestFirst ? "DESC" : "ASC" );
   Sqlite::Statement select( database_, sql.c_str() );
   const auto highest = static_cast<uint64_t>( std::numeric_limits<int64_t>::max() );
   select.bind( static_cast<int64_t>( std::min( query.after, highest ) ) )
      .bind( query.since ? toMilliseconds( *query.since ) : std::numeric_limits<int64_t>::min() )
      .bind( query.object )
      .bind( static_cast<int64_t>( std::min<uint64_t>( query.limit, highest ) ) );
   std::vector<Health::Event> found;
   while ( select.step() )
      if ( auto event = readEvent( select.text( 1 ) ) ) {
         event->id = static_cast<uint64_t>( select.number( 0 ) );
         found.push_back( std::move( *event ) );
      }
   return found;
}

uint64_t Journal::lastId() const {
   return static_cast<uint64_t>(
      database_.number( "SELECT seq FROM sqlite_sequence WHERE name = 'event'" ) );
}

} // namespace Host
