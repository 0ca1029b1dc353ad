#include "host/serve/HistoryApi.h"

#include "host/JsonWriter.h"
#include "host/Times.h"
#include "http/Query.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>

namespace Host {
namespace {

using namespace std::chrono;
using Http::errorResponse;

// What a query asks for; or an error text.
class HistoryQuery {
 public:
   size_t object = 0;
   std::string value{}; // empty: all
   Health::WallTime since{};
   bool byMinute = false;
   bool isCsv = false;
   std::string error{};

   HistoryQuery( const Http::Request &request, const BoardFiles::Board &board,
                 Health::WallTime now )
      : since( now - hours( 1 ) ), isCsv( request.accept.starts_with( "text/csv" ) ),
        board_( board ), now_( now ) {
      const auto values = Http::parseQuery( request.query );
      if ( !values ) {
         error = "the query is not valid: behind each % two hexadecimal digits are needed";
         return;
      }
      if ( !values->contains( "object" ) )
         error = "the query needs an object: /v1/history?object=NAME";
      for ( const auto &[name, text] : *values )
         take( name, text );
      if ( !values->contains( "step" ) )
         byMinute = since < now - hours( 1 );
   }

 private:
   void take( const std::string &name, const std::string &text ) {
      if ( name == "object" )
         takeObject( text );
      else if ( name == "value" )
         value = text;
      else if ( name == "since" )
         takeSince( text );
      else if ( name == "step" )
         takeChoice( name, text, "reading", "minute", byMinute );
      else if ( name == "format" )
         takeChoice( name, text, "json", "csv", isCsv );
      else
         error = fmt::format( "unknown \"{}\" in the query; known are object, value, since, step "
                              "and format",
                              name );
   }
   void takeObject( const std::string &name ) {
      const auto found = std::find_if( board_.objects.begin(), board_.objects.end(),
                                       [&]( const auto &one ) { return one.name == name; } );
      object = static_cast<size_t>( found - board_.objects.begin() );
      if ( found == board_.objects.end() )
         error = fmt::format( "the board has no object \"{}\"", name );
   }
   void takeSince( const std::string &text ) {
      const auto from = sinceOf( text, now_ );
      if ( from && from->time )
         since = *from->time;
      else
         error = fmt::format( "since is \"{}\"; it must be {}", text, sinceTimeForms );
   }
   void takeChoice( const std::string &name, const std::string &text, std::string_view usual,
                    std::string_view other, bool &isOther ) {
      isOther = text == other;
      if ( text != usual && text != other )
         error = fmt::format( "{} is \"{}\"; it must be {} or {}", name, text, usual, other );
   }

   const BoardFiles::Board &board_;
   const Health::WallTime now_;
};

// A number that was known, or a gap.
std::string csvNumber( double number ) {
   return std::isnan( number ) ? "" : fmt::format( "{}", number );
}

void write( JsonWriter &json, double number ) {
   if ( std::isnan( number ) )
      json.value( std::monostate() );
   else
      json.value( number );
}

// With the few digits that single precision has.
double shortened( double number ) {
   return std::isnan( number ) ? number : std::stod( fmt::format( "{:.7g}", number ) );
}

class Answer {
 public:
   Answer( const HistoryQuery &query, const Health::Instant &now ) : query_( query ), now_( now ) {
      if ( query.isCsv )
         csv_ = query.byMinute ? "time,value,unit,lowest,highest\n" : "time,value,unit,number\n";
   }

   void add( const History::Series &series ) {
      const History::Moment from =
         momentOf( now_ ) - duration_cast<History::Moment>( now_.wall - query_.since );
      if ( !query_.isCsv ) {
         json_.beginObject().member( "name", series.name() );
         if ( !series.unit().empty() )
            json_.member( "unit", series.unit() );
         json_.key( query_.byMinute ? "minutes" : "readings" ).beginList();
      }
      if ( query_.byMinute )
         for ( const History::Minute &minute : series.minutes( from ) )
            line( series, minute.at, { shortened( minute.lowest ), shortened( minute.highest ) } );
      else
         for ( const History::Sample &sample : series.readings( from ) )
            line( series, sample.at, { shortened( sample.number ) } );
      if ( !query_.isCsv )
         json_.endList().endObject();
   }

   JsonWriter &json() { return json_; }
   const std::string &csv() const { return csv_; }

 private:
   static History::Moment momentOf( const Health::Instant &instant ) {
      return floor<History::Moment>( instant.steady.time_since_epoch() );
   }

   void line( const History::Series &series, History::Moment at,
              const std::vector<double> &numbers ) {
      const std::string time = timeText( now_.wall - ( momentOf( now_ ) - at ) );
      if ( query_.isCsv ) {
         fmt::format_to( std::back_inserter( csv_ ), "{},{},{}", time, series.name(),
                         series.unit() );
         for ( const double number : numbers )
            csv_ += "," + csvNumber( number );
         csv_ += "\n";
         return;
      }
      json_.beginList().value( time );
      for ( const double number : numbers )
         write( json_, number );
      json_.endList();
   }

   const HistoryQuery &query_;
   const Health::Instant now_;
   JsonWriter json_{};
   std::string csv_{};
};

} // namespace

Http::Response answerHistory( const Http::Request &request, const BoardFiles::Board &board,
                              const History::Store &history ) {
   const Health::Instant now{ steady_clock::now(), floor<milliseconds>( system_clock::now() ) };
   const HistoryQuery query( request, board, now.wall );
   if ( !query.error.empty() )
      return errorResponse( Http::Status::badRequest, query.error );
   const std::string &object = board.objects[query.object].name;
   Answer answer( query, now );
   answer.json().beginObject().member( "object", object ).key( "values" ).beginList();
   bool isFound = query.value.empty();
   for ( const History::Series &series : history.of( query.object ) )
      if ( query.value.empty() || series.name() == query.value ) {
         isFound = true;
         answer.add( series );
      }
   if ( !isFound )
      return errorResponse(
         Http::Status::notFound,
         fmt::format( "nothing is known of a number \"{}\" of \"{}\"", query.value, object ) );
   if ( query.isCsv )
      return { .body = answer.csv(), .contentType = "text/csv; charset=utf-8" };
   return { .body = answer.json().endList().endObject().text() };
}

} // namespace Host
