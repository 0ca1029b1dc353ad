#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Clock.h"
#include "smbus/RootBus.h"
#include "smbusd/accounts/BusAccount.h"
#include "smbusd/accounts/Quarantine.h"

#include <map>
#include <optional>
#include <string>

namespace Smbusd {

// Carries out transactions on one root bus, one after another, and makes sure that each closes the
// multiplexers that it opened. A multiplexer is set by a send byte; a second send byte to the same
// address deselects it. After a failure only deselects are carried out. A deselect that fails stays
// pending: it is tried again before each later transaction, until the address acknowledges a send
// byte. Segments that hold a line or keep running out of time are quarantined.
class TransactionRunner {
 public:
   // The account is told of every transfer; it may be null.
   TransactionRunner( Bus::RootBus &bus, const Bus::Clock &clock, BusAccount *account = nullptr )
      : bus_( bus ), clock_( clock ), account_( account ),
        quarantine_( account ? toString( account->bus() ) : "the bus" ) {}

   // Fills an empty response. On failure it has the answers up to the failed request, and its error
   // names that request and the reason.
   void run( const Bus::Transaction &, Smbus::TransactionResponse & );

   const Quarantine &quarantine() const { return quarantine_; }

 private:
   struct Deselect {
      Bus::Transfer transfer{};
      Bus::SegmentPath joined{}; // the segment that it is to leave
   };

   std::optional<std::string> whyNothingPasses();
   void retryPendingDeselects();
   void carryOut( const Bus::Transaction &, Smbus::TransactionResponse & );
   Bus::Outcome attempt( const Bus::Transfer &, const Bus::Transaction &, BusAccount::Mux,
                         Bus::Clock::Time end );
   Bus::Outcome transferOnce( const Bus::Transfer &, BusAccount::Mux );
   void wasSelected( const Bus::Transfer &, const Bus::Outcome & );
   void wasDeselected( const Bus::Transfer &, const Bus::Outcome & );
   void wasAnswered( const Bus::Outcome & );
   void isLate( const std::string &reason );
   Quarantine::Failure failure( const std::string &reason ) const {
      return { reason, begun_, now_ };
   }
   void judge();

   Bus::RootBus &bus_;
   const Bus::Clock &clock_;
   BusAccount *const account_;
   Bus::Clock::Time now_{ 0 }; // the end of the last transfer, or the start of the transaction
   std::map<uint8_t, Deselect> pendingDeselects_; // by address
   Quarantine quarantine_;
   // of the present transaction:
   Bus::Clock::Time begun_{ 0 };
   Bus::SegmentPath path_{};                 // where its transfers go now
   std::optional<Bus::SegmentPath> asked_{}; // where one was answered
   std::optional<Bus::SegmentPath> late_{};  // where it ran out of time
   std::string whyLate_{};
   std::optional<Bus::SegmentPath> stuck_{}; // where a line was held
   std::string whyStuck_{};
   std::optional<Bus::SegmentPath> held_{}; // a segment that it can't leave, since a line is held
   std::string whyHeld_{};
};

} // namespace Smbusd
