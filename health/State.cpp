#include "health/State.h"

#include "boardfiles/EnumNames.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace Health {
namespace {

constexpr BoardFiles::EnumNames<State, 6> stateNames{ { "ok", "stale", "unreadable", "absent",
                                                        "unmanaged", "unsupported" } };

// The names of pl_status, as pl.h has them.
constexpr std::array<std::string_view, namedStatuses> statusNames{
   "ok", "not managed", "device fault", "unsupported", "socket", "not provided", "transaction"
};

std::string nameOfStatus( int status ) {
   const auto index = static_cast<size_t>( status );
   return status >= 0 && index < statusNames.size() ? fmt::format( " ({})", statusNames[index] )
                                                    : "";
}

} // namespace

bool isBad( State state ) { return state == State::Unreadable || state == State::Stale; }

std::string_view nameOf( State state ) { return stateNames[state]; }

std::optional<State> stateOf( std::string_view name ) { return stateNames.find( name ); }

std::string toText( const Fault &fault ) {
   if ( !fault.status )
      return fault.words;
   return fmt::format( "status {}{}{}{}", *fault.status, nameOfStatus( *fault.status ),
                       fault.words.empty() ? "" : ": ", fault.words );
}

const ValueReport *ObjectReport::find( std::string_view value ) const {
   const auto found = std::find_if( values.begin(), values.end(), [&]( const ValueReport &one ) {
      return one.reading.name == value;
   } );
   return found == values.end() ? nullptr : &*found;
}

bool hasUnreadable( const BoardReport &board ) {
   return std::any_of( board.begin(), board.end(), []( const ObjectReport &object ) {
      return isBad( object.state ) ||
             std::any_of( object.values.begin(), object.values.end(),
                          []( const ValueReport &value ) { return isBad( value.reading.state ); } );
   } );
}

} // namespace Health
