#include "orbis-smbus/Formatting.h"
#include "orbis-smbus/Output.h"
#include "smbus/Decode.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace SmbusClient {

namespace {

using Bus::Transaction;

double secondsOf( uint64_t nanoseconds ) { return static_cast<double>( nanoseconds ) / 1e9; }

// Nothing where the transfers made no sense to the server either.
Transaction transactionOf( const SmbusRecording::Transaction &recorded ) {
   try {
      return Bus::decode( recorded.request(), std::chrono::milliseconds::max() );
   } catch ( const Bus::Refused & ) {
      return {};
   }
}

std::string formatStart( const SmbusRecording::Start &start, bool json ) {
   const std::string when =
      fmt::format( "{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime( std::time_t( start.unix_seconds() ) ) );
   if ( json )
      return jsonObject( [&]( Json &to ) {
         add( to, "start", when );
         add( to, "version", start.version() );
      } );
   return fmt::format( "recorded from {} on by orbis-smbusd {}\n", when, start.version() );
}

std::string asJson( const SmbusRecording::Transaction &recorded,
                    const Bus::Transaction &transaction ) {
   const auto &response = recorded.response();
   return jsonObject( [&]( Json &to ) {
      add( to, "seconds", secondsOf( recorded.begun_ns() ) );
      add( to, "took", secondsOf( recorded.took_ns() ) );
      add( to, "bus", toString( transaction.bus ) );
      to.Key( "requests" );
      to.StartArray();
      for ( size_t i = 0; i < transaction.transfers.size(); ++i ) {
         const auto &transfer = transaction.transfers[i];
         to.StartObject();
         add( to, "operation", describe( transfer ) );
         addBytes( to, "written", transfer.data );
         if ( const int index = static_cast<int>( i ); index < response.response_size() )
            addBytes( to, "read", response.response( index ).data() );
         to.EndObject();
      }
      to.EndArray();
      add( to, "error", response.error() );
   } );
}

std::string asText( const SmbusRecording::Transaction &recorded,
                    const Bus::Transaction &transaction ) {
   const auto &response = recorded.response();
   std::string text = fmt::format(
      "{:12.6f} {:14} {} request{}, {:.3f} ms{}{}\n", secondsOf( recorded.begun_ns() ),
      toString( transaction.bus ), recorded.request().request_size(),
      recorded.request().request_size() == 1 ? "" : "s", secondsOf( recorded.took_ns() ) * 1e3,
      response.failed() ? ", failed: " : "", response.error() );
   for ( size_t i = 0; i < transaction.transfers.size(); ++i ) {
      const auto &transfer = transaction.transfers[i];
      text += fmt::format( "{:28}{}", "", describe( transfer ) );
      if ( !transfer.data.empty() )
         text += ":" + hex( transfer.data );
      const int index = static_cast<int>( i );
      if ( index < response.response_size() && !response.response( index ).data().empty() )
         text += " ->" + hex( response.response( index ).data() );
      text += '\n';
   }
   return text;
}

} // namespace

std::string formatEntry( const SmbusRecording::Entry &entry, bool json ) {
   if ( entry.has_start() )
      return formatStart( entry.start(), json );
   const Bus::Transaction transaction = transactionOf( entry.transaction() );
   return json ? asJson( entry.transaction(), transaction )
               : asText( entry.transaction(), transaction );
}

} // namespace SmbusClient
