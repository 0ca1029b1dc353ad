#include "host/serve/PageApi.h"

#include "http/Tags.h"
#include "panel/Files.h"

#include <fmt/format.h>

namespace Host {
namespace {

// The page's files come from here alone; no other page may have this one in a frame, and a name
// from the board that gets into the page as a script is not run. A browser asks whether its copy is
// still right: the next program may have another page.
const std::vector<std::pair<std::string, std::string>> pageHeaders{
   { "Cache-Control", "no-cache" },
   { "Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'" },
   { "Referrer-Policy", "no-referrer" },
   { "X-Frame-Options", "DENY" },
   { "Cross-Origin-Opener-Policy", "same-origin" },
   { "Cross-Origin-Resource-Policy", "same-origin" }
};

} // namespace

Http::Response answerPage( const Http::Request &request, std::string_view name ) {
   const Panel::File *file = Panel::find( name );
   if ( !file )
      return Http::errorResponse( Http::Status::notFound,
                                  fmt::format( "the page has no file \"{}\"", name ) );
   Http::Response response{ .contentType = std::string( file->contentType ),
                            .headers = pageHeaders };
   response.headers.emplace_back( "ETag", file->tag );
   if ( Http::hasTag( request.ifNoneMatch, file->tag ) )
      response.status = Http::Status::notModified;
   else
      response.body = file->text;
   return response;
}

} // namespace Host
