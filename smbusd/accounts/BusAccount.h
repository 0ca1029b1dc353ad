// What passed on one root bus, by segment, chip and client: how often, how long, with which errors.
#pragma once

#include "smbus/RootBusId.h"
#include "smbus/WireTime.h"
#include "smbusd/accounts/Latencies.h"
#include "smbusd/accounts/PassedTransfers.h"

#include <array>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Smbusd {

enum class ErrorKind { NoAcknowledge, Pec, Timeout, HeldLow, Other };
inline constexpr size_t errorKinds = 5;
// Of the text that a bus gives as its error.
ErrorKind errorKindOf( std::string_view error );

struct Totals {
   uint64_t transfers = 0;
   uint64_t failures = 0; // of them
   Bus::WireCount wires{};
   Bus::Clock::Time busy{ 0 }; // from the start of each transfer to its end

   void add( const Bus::WireCount &, Bus::Clock::Time took, bool failed );
   Totals &operator+=( const Totals & );
};

// The thread that has the bus writes, any thread reads: thread-safe. In the steady state it needs
// no memory. It is bounded: what comes behind the last segment or client that it has room for, is
// counted with the bus or with all other clients.
class BusAccount {
 public:
   using Time = Bus::Clock::Time;

   static constexpr size_t maxSegments = 256;
   static constexpr size_t maxClients = 64;

   // What a transfer does to a multiplexer.
   enum class Mux { None, Select, Deselect };

   struct Chip {
      Totals totals{};
      uint64_t failuresInARow = 0; // since its last good transfer
      ErrorKind lastFailure{};     // of these
   };
   // The segment that the selections lead to; the first one is the root bus itself.
   struct Segment {
      size_t before = 0; // the segment that the multiplexer is on
      uint8_t mux = 0;
      uint8_t select = 0; // the byte
      Totals totals{};
      std::map<uint8_t, Chip> chips{}; // by address
   };
   struct Client {
      uid_t user = 0;
      pid_t process = 0;   // 0: all others
      std::string program; // when it was first seen
      Totals totals{};
      uint64_t transactions = 0;
      uint64_t failedTransactions = 0;
   };

   // Clock in Hz.
   BusAccount( const Bus::RootBusId &bus, uint32_t clock );

   void begin( const Peer & );
   void add( const Bus::Transfer &, const Bus::Outcome &, Mux, Time begun, Time took );
   // Latency: from the client's request to its answer, with the time that it waited for the bus.
   void end( bool failed, Time latency );

   const Bus::RootBusId &bus() const { return bus_; }
   uint32_t clock() const { return clock_; }
   bool hasWires() const { return bus_.master != Bus::Master::IoPort; }

   // A copy of the figures.
   struct Figures {
      Totals totals{};
      std::array<uint64_t, errorKinds> errors{};
      uint64_t transactions = 0;
      uint64_t failedTransactions = 0;
      Latencies latencies{};
      Time latency{ 0 }; // of all together
      std::vector<Segment> segments{};
      std::vector<Client> clients{};
      std::optional<size_t> heldSegment{};
   };
   Figures figures() const;

   // Copies of the last transfers, or of what led to the last failures, in the order of time.
   std::vector<PassedTransfer> last( bool ofFailures ) const;
   // The selections that lead to a segment, the outermost first: "0x70=1 0x71=4". Empty: the root
   // bus.
   static std::string pathTo( const std::vector<Segment> &, size_t segment );
   std::vector<Segment> segments() const;

 private:
   void addFailure( Chip &, ErrorKind );
   size_t segmentBehind( uint8_t mux, uint8_t select );
   Client &clientOf( const Peer & );

   const Bus::RootBusId bus_;
   const uint32_t clock_;
   mutable std::mutex mutex_;
   Totals totals_;
   std::array<uint64_t, errorKinds> errors_{};
   uint64_t transactions_ = 0;
   uint64_t failedTransactions_ = 0;
   Latencies latencies_;
   Time latency_{ 0 };
   std::vector<Segment> segments_;
   // While a line is held or transfers run out of time, and none was good since: the segment of the
   // first of them. A chip behind a multiplexer that holds a line also keeps the multiplexer from
   // its release, so that later failures don't tell where it is.
   std::optional<size_t> heldSegment_;
   std::list<Client> clients_; // the one that came last is the first
   Client others_;
   PassedTransfers passed_;
   // of the present transaction:
   Peer peer_;
   Client *client_ = &others_;
   size_t segment_ = 0;
   bool hasPassed_ = false; // a transfer has
};

} // namespace Smbusd
