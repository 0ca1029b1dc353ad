#include "sqlite/Database.h"

#include <cerrno>
#include <fmt/format.h>
#include <sqlite3.h>
#include <system_error>

namespace Sqlite {
namespace {

// How long another process, such as a reader, may hold the database.
constexpr int longestWaitMs = 2000;

// SQLite takes some bytes of an URI for its own.
std::string uriOf( const std::filesystem::path &file, const char *parameters ) {
   std::string uri = "file:";
   for ( const char c : file.string() )
      uri += c == '%' || c == '?' || c == '#' ? fmt::format( "%{:02x}", static_cast<unsigned>( c ) )
                                              : std::string( 1, c );
   return uri + parameters;
}

std::string nameFor( const std::filesystem::path &file, Database::Use use ) {
   if ( file.empty() )
      return ":memory:";
   const auto absolute = std::filesystem::absolute( file );
   return uriOf( absolute, use == Database::Use::ReadAlone ? "?immutable=1" : "" );
}

int flagsOf( Database::Use use ) {
   return SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX |
          ( use == Database::Use::Write ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE
                                        : SQLITE_OPEN_READONLY );
}

// The system's reason says more than SQLite's, where there is one.
std::string reasonOf( sqlite3 *database ) {
   const int code = sqlite3_errcode( database );
   const int system = sqlite3_system_errno( database );
   if ( ( code == SQLITE_CANTOPEN || code == SQLITE_IOERR ) && system != 0 )
      return std::generic_category().message( system );
   return code == SQLITE_FULL ? "the disk is full" : sqlite3_errmsg( database );
}

} // namespace

Database::Database( const std::filesystem::path &file, Use use ) : name_( file.string() ) {
   sqlite3 *opened = nullptr;
   const int code =
      sqlite3_open_v2( nameFor( file, use ).c_str(), &opened, flagsOf( use ), nullptr );
   database_.reset( opened );
   if ( code != SQLITE_OK )
      fail();
   sqlite3_busy_timeout( opened, longestWaitMs );
   // Without the right to write, SQLite opens it to read.
   if ( use == Use::Write && sqlite3_db_readonly( opened, "main" ) == 1 )
      throw Error( Error::Kind::Other, name_ + ": " + std::generic_category().message( EACCES ) );
}

void Database::fail() const {
   using enum Error::Kind;
   const int code = database_ ? sqlite3_errcode( database_.get() ) : SQLITE_NOMEM;
   throw Error( code == SQLITE_NOTADB    ? NoDatabase
                : code == SQLITE_CORRUPT ? Damaged
                                         : Other,
                name_ + ": " + ( database_ ? reasonOf( database_.get() ) : "not enough memory" ) );
}

void Database::run( const char *statements ) {
   if ( sqlite3_exec( database_.get(), statements, nullptr, nullptr, nullptr ) != SQLITE_OK )
      fail();
}

int64_t Database::number( const char *question ) const {
   Statement statement( *this, question );
   return statement.step() ? statement.number( 0 ) : 0;
}

std::string Database::text( const char *question ) const {
   Statement statement( *this, question );
   return statement.step() ? statement.text( 0 ) : std::string();
}

void Database::Close::operator()( sqlite3 *database ) const { sqlite3_close_v2( database ); }

Statement::Statement( const Database &database, const char *sql ) : database_( database ) {
   sqlite3_stmt *made = nullptr;
   if ( sqlite3_prepare_v2( database.database_.get(), sql, -1, &made, nullptr ) != SQLITE_OK )
      database.fail();
   statement_.reset( made );
}

Statement &Statement::bind( int64_t number ) {
   if ( sqlite3_bind_int64( statement_.get(), ++bound_, number ) != SQLITE_OK )
      database_.fail();
   return *this;
}

Statement &Statement::bind( std::string_view text ) {
   if ( sqlite3_bind_text( statement_.get(), ++bound_, text.data(), static_cast<int>( text.size() ),
                           SQLITE_TRANSIENT ) != SQLITE_OK )
      database_.fail();
   return *this;
}

bool Statement::step() {
   const int code = sqlite3_step( statement_.get() );
   if ( code == SQLITE_ROW )
      return true;
   if ( code != SQLITE_DONE )
      database_.fail();
   sqlite3_reset( statement_.get() );
   bound_ = 0;
   return false;
}

int64_t Statement::number( int column ) const {
   return sqlite3_column_int64( statement_.get(), column );
}

std::string Statement::text( int column ) const {
   const auto *text = sqlite3_column_text( statement_.get(), column );
   return { reinterpret_cast<const char *>( text ),
            static_cast<size_t>( sqlite3_column_bytes( statement_.get(), column ) ) };
}

void Statement::Finalize::operator()( sqlite3_stmt *statement ) const {
   sqlite3_finalize( statement );
}

} // namespace Sqlite
