#pragma once

#include "health/Event.h"
#include "sqlite/Database.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Host {

// The events of a board, in a file that outlives the process. It has the last `capacity` of them;
// their ids count up for ever. An event that was added stays, whenever the process or the machine
// ends.
class Journal {
 public:
   static constexpr size_t usualCapacity = 10'000;

   // Opens a journal, or makes one. A damaged one is put aside under another name: see notice().
   // Throws std::runtime_error, with the file and the reason, where that can't be: then the file
   // stays as it is.
   explicit Journal( const std::filesystem::path &file, size_t capacity = usualCapacity );
   // One that ends with the process. Its first id comes behind `last`.
   static Journal inMemory( uint64_t last = 0, size_t capacity = usualCapacity );
   // Only to read, also while a process writes. Throws as above.
   static Journal toRead( const std::filesystem::path &file );

   // What a person should know of its opening; usually empty.
   const std::string &notice() const { return notice_; }

   // Gives the events their ids. All or, when it throws, none are in the journal.
   void add( std::vector<Health::Event> &events );

   struct Query {
      std::optional<Health::WallTime> since{}; // from then on
      uint64_t after = 0;                      // only of higher ids
      std::string object{};                    // only about it, or explaining it; empty: all
      size_t limit = usualCapacity;
      bool newestFirst = false; // also says which ones are left out by the limit
   };
   std::vector<Health::Event> events( const Query &query ) const;

   // The highest id that was ever given; 0 if none was.
   uint64_t lastId() const;

 private:
   Journal( Sqlite::Database database, size_t capacity );
   void make( uint64_t last );

   std::string notice_{}; // before the database: its opening writes it
   Sqlite::Database database_;
   size_t capacity_;
};

} // namespace Host
