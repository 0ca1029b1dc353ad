#pragma once

#include "host/plugin/Messages.h"
#include "host/session/Limits.h"

#include <optional>
#include <string>
#include <utility>

namespace Host {

// What users read while the plug-in has no connection to its server.
inline constexpr auto waitingForServer = "can't reach the SMBus server yet";

// The command that the child carries out now, if there is one, and how long it may take. A command
// has one or more operations. The time limit is for one operation.
class CurrentCommand {
 public:
   // `limits` must outlive this object.
   explicit CurrentCommand( const Limits &limits ) : limits_( limits ) {}

   void start( const Command &command, Time now ) { running_ = Running{ command, now, {} }; }
   void operationBegins( const std::string &operation, Time since );
   // The command that was running. Of one that reads several objects, the reading of the first one:
   // those of the others go on.
   std::optional<Command> end( Time now );
   // Nothing is running from now on.
   void stop() { running_.reset(); }

   bool isRunning() const { return running_.has_value(); }
   // The running command where it is of this type, else null.
   template <class Type>
   const Type *as() const {
      return running_ ? std::get_if<Type>( &running_->command ) : nullptr;
   }
   // The object whose operations run. Nothing where the command is for no object.
   std::optional<size_t> object() const;
   // The running operation as pl.h names it. Empty before the first one begins.
   std::string operation() const { return running_ ? running_->operation : std::string(); }

   // What to say of an operation that takes longer than its limit. The child must be ended then.
   std::optional<std::string> overdue( Time now ) const;
   // What to say of objects that wait for an init which takes long.
   std::optional<Fault> slowInit( Time now ) const;
   // The times at which slowInit() and overdue() change.
   std::pair<Time, Time> deadlines() const;

 private:
   struct Running {
      Command command;
      Time since;
      std::string operation;
   };

   Clock::duration limit() const { return as<InitCommand>() ? limits_.init : limits_.step; }

   const Limits &limits_;
   std::optional<Running> running_{};
};

} // namespace Host
