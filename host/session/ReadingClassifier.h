#pragma once

#include "boardfiles/Board.h"
#include "host/plugin/Messages.h"
#include "host/session/AbsenceCheck.h"
#include "host/session/FaultWords.h"
#include "host/session/Limits.h"
#include "host/session/Polls.h"

#include <optional>
#include <string>

namespace Host {

// Decides what a reading means, from the traces that the plug-in wrote while it was made: whether
// an absent module is really absent, why an operation failed, and how old a polled value is.
class ReadingClassifier {
 public:
   // `board` must outlive this object.
   ReadingClassifier( const BoardFiles::Board &board, const Limits &limits );

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
   Time classify( Reading &reading, size_t object, Time now );
   // Whether the object is to be read again in this round: its module missed an acknowledge.
   bool wantsAnotherRead( size_t object ) const { return absences_.wantsAnotherRead( object ); }

 private:
   // What the traces of a read say of a slot's module.
   enum class Heard {
      Miss,      // it missed the first transfer
      LaterMiss, // it missed a later one
      BusFault,  // nothing: something else failed
      Unmanaged, // it is there, and unknown
      Unclear,   // it is there, and could not be made out
      Nothing,   // no fault: the driver knows from elsewhere that it is absent
   };

   Heard heardOf( const BoardFiles::ObjectDescription &slot ) const;
   void classifyAbsent( Reading &reading, size_t slot );

   const BoardFiles::Board &board_;
   FaultWords words_;
   Polls polls_;
   AbsenceCheck absences_;
};

} // namespace Host
