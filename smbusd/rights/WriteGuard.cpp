#include "smbusd/rights/WriteGuard.h"

#include "smbus/Decode.h"
#include "sockets/Credentials.h"

#include <fmt/format.h>

#include <grp.h>
#include <pwd.h>

#include <algorithm>

namespace Smbusd {

namespace {

constexpr size_t shownBytes = 32;

bool isOn( const BoardFiles::WriteRow &row, const Bus::RootBusId &bus, const std::string &path,
           uint8_t address ) {
   return row.bus == bus && row.path == path && row.address == address;
}

bool holds( const BoardFiles::WriteRow &row, const Bus::Transfer &transfer ) {
   return std::any_of( row.registers.begin(), row.registers.end(),
                       [&transfer]( const BoardFiles::WritableRegisters &range ) {
                          return transfer.offset >= range.first && transfer.offset <= range.last &&
                                 transfer.length <= range.bytes;
                       } );
}

std::string bytesOf( const Bus::Transfer &transfer ) {
   std::string text;
   for ( const char byte : transfer.data.substr( 0, shownBytes ) )
      text += fmt::format( " {:#04x}", static_cast<unsigned char>( byte ) );
   if ( transfer.data.size() > shownBytes )
      text += " ...";
   return text.empty() ? text : ":" + text;
}

std::string behind( const std::string &path ) { return path.empty() ? "" : " behind " + path; }

} // namespace

People People::ofThisMachine() {
   return { .user = []( const std::string &name ) -> std::optional<uid_t> {
              const passwd *found = getpwnam( name.c_str() );
              return found ? std::optional( found->pw_uid ) : std::nullopt;
           },
            .group = []( const std::string &name ) -> std::optional<gid_t> {
               const ::group *found = getgrnam( name.c_str() );
               return found ? std::optional( found->gr_gid ) : std::nullopt;
            },
            .groupsOf =
               []( const Peer &peer ) {
                  Sockets::Credentials known = Sockets::credentialsOf( peer.socket );
                  known.groups.push_back( known.group );
                  return known.groups;
               },
            .nameOf = Sockets::nameOf,
            .programOf = Smbusd::programOf };
}

WriteGuard::WriteGuard( NamedMuxes muxes, std::optional<BoardFiles::WritePolicy> policy,
                        uid_t ownUser, People people, Tell tell )
   : muxes_( std::move( muxes ) ), policy_( std::move( policy ) ), ownUser_( ownUser ),
     people_( std::move( people ) ), tell_( std::move( tell ) ) {
   if ( !policy_ )
      return;
   for ( const BoardFiles::WriteRow &row : policy_->rows ) {
      Right right{ &row, {}, {} };
      if ( row.group.empty() )
         right.user = people_.user( row.user );
      else
         right.group = people_.group( row.group );
      if ( !right.user && !right.group )
         tell_( fmt::format( "{}: there is no {} {} here, so this row lets nobody write",
                             toText( row.place ), row.group.empty() ? "user" : "group",
                             row.group.empty() ? row.user : row.group ) );
      rights_.push_back( right );
   }
}

const BoardFiles::WriteRow *WriteGuard::rowFor( const Write &write, const Peer &peer ) const {
   for ( const auto &[row, user, group] : rights_ ) {
      if ( !isOn( *row, write.bus, write.path, write.transfer.address ) ||
           !holds( *row, write.transfer ) )
         continue;
      if ( user && *user == peer.user )
         return row;
      if ( !group )
         continue;
      const std::vector<gid_t> groups = people_.groupsOf( peer );
      if ( std::find( groups.begin(), groups.end(), *group ) != groups.end() )
         return row;
   }
   return nullptr;
}

std::string WriteGuard::whyNot( const Write &write, const Peer &peer ) const {
   const Bus::Transfer &transfer = write.transfer;
   const std::string via = write.path.empty() ? "" : fmt::format( R"("via": "{}", )", write.path );
   const std::string bytes =
      transfer.length == 1 ? "" : fmt::format( R"(, "bytes": {})", transfer.length );
   std::string why = fmt::format(
      R"({} has no right to it: no row of {} allows it. The row would be {{ "user": "{}", )"
      R"("bus": "{}", {}"address": {}, "registers": [ {{ "first": {}{} }} ], "reason": "..." }})",
      who( peer ), policy_->file, people_.nameOf( peer.user ), toString( write.bus ), via,
      transfer.address, transfer.offset, bytes );
   for ( const BoardFiles::WriteRow &row : policy_->rows ) // beside which it was refused
      if ( isOn( row, write.bus, write.path, transfer.address ) )
         why += "; this chip has a row for " + toText( row );
   return why;
}

std::string WriteGuard::who( const Peer &peer ) const {
   const std::string program = people_.programOf( peer.process );
   return fmt::format( "{} (user {}, process {}{}{})", people_.nameOf( peer.user ), peer.user,
                       peer.process, program.empty() ? "" : " ", program );
}

void WriteGuard::check( const Bus::Transaction &transaction, const Peer &peer ) const {
   if ( !policy_ || isOwn( peer ) )
      return;
   OpenMuxes muxes( muxes_, transaction.bus );
   for ( size_t i = 0; i < transaction.transfers.size(); ++i ) {
      const Bus::Transfer &transfer = transaction.transfers[i];
      if ( transfer.isRead() || muxes.take( transfer ) )
         continue;
      const Write write{ transfer, transaction.bus, muxes.path() };
      if ( !rowFor( write, peer ) )
         throw Bus::Refused( describe( transaction, i, whyNot( write, peer ) ) );
   }
   muxes.checkClosed( transaction );
}

void WriteGuard::passed( const Bus::Transaction &transaction,
                         const Smbus::TransactionResponse &response, const Peer &peer ) const {
   if ( isOwn( peer ) )
      return;
   OpenMuxes muxes( muxes_, transaction.bus );
   const auto done = static_cast<size_t>( response.response_size() );
   for ( size_t i = 0; i < transaction.transfers.size(); ++i ) {
      const Bus::Transfer &transfer = transaction.transfers[i];
      if ( transfer.isRead() || muxes.take( transfer ) )
         continue;
      const Write write{ transfer, transaction.bus, muxes.path() };
      const BoardFiles::WriteRow *row = policy_ ? rowFor( write, peer ) : nullptr;
      const std::string answer = i < done    ? "done"
                                 : i == done ? response.error()
                                             : "not carried out, since a request before it failed";
      tell_( fmt::format(
         "raw write by {}: {}{} on {}{}: {}{}", who( peer ), describe( transfer ),
         behind( write.path ), toString( write.bus ), bytesOf( transfer ), answer,
         row ? fmt::format( "; allowed at {}: {}", toText( row->place ), row->reason ) : "" ) );
   }
}

} // namespace Smbusd
