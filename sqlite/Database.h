// A database of SQLite, and its statements. What fails throws Error.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace Sqlite {

// Names the file and the reason.
class Error : public std::runtime_error {
 public:
   enum class Kind { NoDatabase, Damaged, Other };
   Error( Kind kind, const std::string &words ) : std::runtime_error( words ), kind_( kind ) {}
   Kind kind() const { return kind_; }

 private:
   Kind kind_;
};

class Database {
 public:
   enum class Use {
      Write,     // it is made if it is not there
      Read,      // another process may write it
      ReadAlone, // no process writes it: needs no right to make files beside it
   };

   // An empty path: in memory.
   Database( const std::filesystem::path &file, Use use );

   // Carries statements without results out.
   void run( const char *statements );
   // The first column of the first row; 0 or "" without a row.
   int64_t number( const char *question ) const;
   std::string text( const char *question ) const;

 private:
   friend class Statement;
   [[noreturn]] void fail() const;

   struct Close {
      void operator()( sqlite3 *database ) const;
   };
   const std::string name_; // for messages
   std::unique_ptr<sqlite3, Close> database_;
};

// The database must outlive it.
class Statement {
 public:
   Statement( const Database &database, const char *sql );

   // The values of its parameters, one after another.
   Statement &bind( int64_t number );
   Statement &bind( std::string_view text );
   // Whether there is a row, the first time or one more. Without one it can be used again.
   bool step();
   // Of the row; columns count from 0.
   int64_t number( int column ) const;
   std::string text( int column ) const;

 private:
   struct Finalize {
      void operator()( sqlite3_stmt *statement ) const;
   };
   const Database &database_;
   std::unique_ptr<sqlite3_stmt, Finalize> statement_;
   int bound_ = 0;
};

} // namespace Sqlite
