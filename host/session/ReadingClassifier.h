#pragma once

#include "boardfiles/Board.h"
#include "host/plugin/Messages.h"
#include "host/session/FaultWords.h"
#include "host/session/Polls.h"

#include <optional>
#include <string>

namespace Host {

// Decides what a reading means, from the traces that the plug-in wrote while it was made: whether
// an absent module is really absent, why an operation failed, and how old a polled value is.
class ReadingClassifier {
 public:
   // `board` must outlive this object.
   explicit ReadingClassifier( const BoardFiles::Board &board );

   // A new child begins without traces, and its devices have not polled yet.
   void childStarted() { polls_.clear(); }
   void operationBegins() { words_.operationBegins(); }
   // `added` is the object that is being brought up, if one is.
   void heard( const Trace &trace, std::optional<size_t> added, Time now );

   // Why the operation failed, as its traces say. Empty when they don't.
   std::string faultWords() const { return words_.words(); }
   // Adds these words to an unreadable reading that has none.
   void explain( Reading &reading ) const;
   // Corrects a reading of an object. Returns the time at which its value was measured.
   Time classify( Reading &reading, size_t object, Time now ) const;

 private:
   State stateOfAbsent( const BoardFiles::ObjectDescription &slot ) const;

   const BoardFiles::Board &board_;
   FaultWords words_;
   Polls polls_;
};

} // namespace Host
