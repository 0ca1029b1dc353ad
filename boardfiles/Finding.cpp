#include "boardfiles/Finding.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

namespace BoardFiles {

namespace {

std::string errorsOf( const Findings &findings ) {
   std::string lines;
   for ( const Finding &finding : findings ) {
      if ( !finding.isWarning() )
         lines += ( lines.empty() ? "" : "\n" ) + toText( finding );
   }
   return lines;
}

} // namespace

std::string toText( const Place &place ) {
   return place.line == 0 ? place.file
                          : fmt::format( "{}:{}:{}", place.file, place.line, place.column );
}

std::string toText( const Finding &finding ) {
   return fmt::format( "{}: {}{}{}{}", toText( finding.place ),
                       finding.isWarning() ? "warning: " : "", finding.object,
                       finding.object.empty() ? "" : ": ", finding.reason );
}

void report( Findings &findings, const Place &place, std::string reason ) {
   findings.push_back( { place, {}, std::move( reason ), Finding::Severity::Error } );
}

void warn( Findings &findings, const Place &place, std::string reason ) {
   findings.push_back( { place, {}, std::move( reason ), Finding::Severity::Warning } );
}

bool hasErrors( const Findings &findings ) {
   return std::any_of( findings.begin(), findings.end(),
                       []( const Finding &finding ) { return !finding.isWarning(); } );
}

std::string toJson( const Findings &findings ) {
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> json( buffer );
   const auto text = [&json]( const char *key, const std::string &value ) {
      json.Key( key );
      json.String( value.c_str(), static_cast<rapidjson::SizeType>( value.size() ) );
   };
   json.StartArray();
   for ( const Finding &finding : findings ) {
      json.StartObject();
      text( "severity", finding.isWarning() ? "warning" : "error" );
      text( "file", finding.place.file );
      if ( finding.place.line != 0 ) {
         json.Key( "line" );
         json.Uint( finding.place.line );
         json.Key( "column" );
         json.Uint( finding.place.column );
      }
      text( "pointer", finding.place.pointer );
      if ( !finding.object.empty() )
         text( "object", finding.object );
      text( "reason", finding.reason );
      json.EndObject();
   }
   json.EndArray();
   return { buffer.GetString(), buffer.GetSize() };
}

BoardError::BoardError( const Findings &findings ) : std::runtime_error( errorsOf( findings ) ) {}

BoardError::BoardError( const Place &place, const std::string &reason )
   : BoardError( Findings{ { place, {}, reason, Finding::Severity::Error } } ) {}

void throwErrors( const Findings &findings ) {
   if ( hasErrors( findings ) )
      throw BoardError( findings );
}

} // namespace BoardFiles
