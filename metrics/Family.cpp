#include "metrics/Family.h"

#include <array>
#include <cmath>
#include <fmt/compile.h>
#include <fmt/format.h>

namespace Metrics {
namespace {

void appendNumber( std::string &to, double number ) {
   if ( std::isnan( number ) ) {
      to += "NaN";
   } else if ( std::isinf( number ) ) {
      to += number > 0 ? "+Inf" : "-Inf";
   } else {
      std::array<char, 32> digits; // the shortest text that is this number has at most 24
      to.append( digits.data(), fmt::format_to( digits.data(), FMT_COMPILE( "{}" ), number ) );
   }
}

// OpenMetrics wants "1.0"; the same text in both formats makes the same series of both.
std::string boundText( double bound ) {
   std::string text;
   appendNumber( text, bound );
   return text.find_first_of( ".eI" ) == std::string::npos ? text + ".0" : text;
}

std::string helpText( std::string_view help, Format format ) {
   std::string text;
   for ( const char c : help ) {
      if ( c == '\n' ) {
         text += "\\n";
         continue;
      }
      if ( c == '\\' || ( c == '"' && format == Format::OpenMetrics ) )
         text += '\\';
      text += c;
   }
   return text;
}

} // namespace

std::string_view nameOf( Type type ) {
   switch ( type ) {
   case Type::Counter:
      return "counter";
   case Type::Histogram:
      return "histogram";
   case Type::Info:
      return "info";
   default:
      return "gauge";
   }
}

std::string seriesName( const Description &description ) {
   std::string name( description.name );
   if ( description.type == Type::Counter )
      name += "_total";
   if ( description.type == Type::Info )
      name += "_info";
   return name;
}

Family::Family( const Description &description, Format format )
   : description_( description ), format_( format ), series_( seriesName( description ) ) {}

void Family::sample( std::string_view behind, std::string_view labels, double value ) {
   samples_.append( series_ ).append( behind );
   if ( !labels.empty() )
      samples_.append( "{" ).append( labels ).append( "}" );
   samples_ += ' ';
   appendNumber( samples_, value );
   samples_ += '\n';
}

void Family::add( const Labels &labels, const Histogram &histogram ) {
   for ( const Histogram::Bucket &bucket : histogram.buckets )
      sample( "_bucket", labels.with( "le", boundText( bucket.upTo ) ).text(),
              static_cast<double>( bucket.count ) );
   const auto count = static_cast<double>( histogram.count );
   sample( "_bucket", labels.with( "le", "+Inf" ).text(), count );
   if ( histogram.sum )
      sample( "_sum", labels.text(), *histogram.sum );
   sample( "_count", labels.text(), count );
}

// The text format knows no info, and calls a counter by the name of its series.
void Family::appendTo( std::string &text ) const {
   if ( isEmpty() )
      return;
   const bool isOpen = format_ == Format::OpenMetrics;
   const std::string name = isOpen ? std::string( description_.name ) : series_;
   const Type type = description_.type == Type::Info && !isOpen ? Type::Gauge : description_.type;
   text += fmt::format( "# HELP {} {}\n", name, helpText( description_.help, format_ ) );
   text += fmt::format( "# TYPE {} {}\n", name, nameOf( type ) );
   if ( isOpen && !description_.unit.empty() )
      text += fmt::format( "# UNIT {} {}\n", name, description_.unit );
   text += samples_;
}

std::string exposition( const std::vector<Family> &families, Format format ) {
   constexpr size_t header = 300; // a family's name, type and help have fewer characters
   std::string text;
   size_t size = 0;
   for ( const Family &family : families )
      size += family.size() + header;
   text.reserve( size );
   for ( const Family &family : families )
      family.appendTo( text );
   if ( format == Format::OpenMetrics )
      text += "# EOF\n";
   return text;
}

} // namespace Metrics
