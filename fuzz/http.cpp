// The texts of an HTTP request: path, query, tags, and the headers that decide whether it is
// answered. They are lines of the input.
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"
#include "http/Guard.h"
#include "http/Query.h"
#include "http/Tags.h"
#include "http/Utf8.h"

#include <array>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   std::array<std::string, 5> lines;
   std::string_view rest = Fuzz::textOf( data, size );
   for ( std::string &line : lines ) {
      line = rest.substr( 0, rest.find( '\n' ) );
      rest.remove_prefix( std::min( line.size() + 1, rest.size() ) );
   }
   const auto &[target, host, origin, authorization, tags] = lines;
   if ( const auto path = Http::parsePath( target ) )
      Fuzz::expect( Http::parsePath( Http::urlEncoded( *path ) ) == path,
                    "a path that is written and read stays the same" );
   if ( const auto query = Http::parseQuery( target ) )
      for ( const auto &[name, value] : *query )
         Fuzz::expect(
            Http::parseQuery( Http::urlEncoded( name ) + "=" + Http::urlEncoded( value ) )
                  ->at( name ) == value,
            "a value that is written and read stays the same" );
   Http::wholeNumber( target );
   const std::string text = Http::withoutOtherBytes( target );
   Fuzz::expect( Http::withoutOtherBytes( text ) == text, "good UTF-8 stays as it is" );
   if ( !tags.empty() )
      Http::hasTag( tags, authorization );
   static const Http::Guard guard;
   const auto refusal =
      guard.refusal( target.size() % 2 ? "GET" : "POST",
                     { .host = host, .origin = origin, .authorization = authorization } );
   Fuzz::expect( target.size() % 2 || refusal, "without a token nothing is changed" );
   return 0;
}
