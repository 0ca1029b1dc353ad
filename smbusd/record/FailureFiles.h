#pragma once

#include "smbus/Clock.h"

#include <cstddef>
#include <deque>
#include <fstream>
#include <map>
#include <string>

namespace Smbusd {

// Keeps what passed around a failed transaction in a file of its own, which a ring of recordings
// doesn't overwrite: RECORDING.failed-TIME. The same error has one such file an hour, so that a
// chip that is absent for a week doesn't use them up.
class FailureFiles {
 public:
   static constexpr size_t entriesBefore = 200;
   static constexpr size_t entriesAfter = 50;   // as many after each further failure
   static constexpr size_t maxBytes = 1u << 20; // of entries before, and of a file
   static constexpr size_t maxFiles = 16;       // the newest ones stay
   static constexpr Bus::Clock::Time again = std::chrono::hours( 1 );

   // The start is the frame with which each file begins. Files of earlier runs count, too.
   FailureFiles( const std::string &recording, const std::string &start )
      : prefix_( recording + ".failed-" ), start_( start ) {}

   // The frame of the next transaction, and its error if it failed. A file that can't be written is
   // told in the log.
   void add( const std::string &frame, const std::string &error, Bus::Clock::Time now );

 private:
   bool isNew( const std::string &error, Bus::Clock::Time now );
   std::string newFile();
   void begin();
   void append( const std::string &frame );
   void removeOldest() const;

   const std::string prefix_;
   const std::string start_;
   std::deque<std::string> before_;
   size_t bytesBefore_ = 0;
   std::map<std::string, Bus::Clock::Time> known_; // errors, and when they had their file
   std::string time_;                              // in the name of the newest file
   unsigned number_ = 0;                           // of the file in that second
   std::ofstream file_;                            // open while entries belong to it
   size_t written_ = 0;
   size_t missing_ = 0; // entries, until it is complete
};

} // namespace Smbusd
