#pragma once

#include "boardfiles/WritePolicy.h"
#include "smbusd/rights/Muxes.h"
#include "smbusd/server/Gate.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Smbusd {

// The users, groups and processes of this machine. A test has its own.
struct People {
   std::function<std::optional<uid_t>( const std::string & )> user;
   std::function<std::optional<gid_t>( const std::string & )> group;
   std::function<std::vector<gid_t>( const Peer & )> groupsOf; // all of them
   std::function<std::string( uid_t )> nameOf;
   std::function<std::string( pid_t )> programOf;

   static People ofThisMachine();
};

// Raw writes are those of any user but the server's own, whose plug-in knows what it does. Each is
// told, and with a policy only those pass that have a row in it. Setting a named multiplexer is no
// such write.
class WriteGuard final : public Gate {
 public:
   using Tell = std::function<void( const std::string & )>;

   // Without a policy all writes pass. Tells of rows whose user or group is not there. `tell` is
   // called in the threads of the clients.
   WriteGuard( NamedMuxes muxes, std::optional<BoardFiles::WritePolicy> policy, uid_t ownUser,
               People people, Tell tell );

   void check( const Bus::Transaction &, const Peer & ) const override;
   void passed( const Bus::Transaction &, const Smbus::TransactionResponse &,
                const Peer & ) const override;

 private:
   // A row, for whom it is.
   struct Right {
      const BoardFiles::WriteRow *row;
      std::optional<uid_t> user;
      std::optional<gid_t> group;
   };
   struct Write {
      const Bus::Transfer &transfer;
      const Bus::RootBusId &bus;
      std::string path;
   };

   bool isOwn( const Peer &peer ) const { return peer.user == ownUser_; }
   const BoardFiles::WriteRow *rowFor( const Write &write, const Peer &peer ) const;
   std::string whyNot( const Write &write, const Peer &peer ) const;
   std::string who( const Peer &peer ) const;

   const NamedMuxes muxes_;
   const std::optional<BoardFiles::WritePolicy> policy_;
   const uid_t ownUser_;
   const People people_;
   const Tell tell_;
   std::vector<Right> rights_{};
};

} // namespace Smbusd
