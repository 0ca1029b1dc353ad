// A request and its answer, as those who answer see them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Http {

struct Request {
   std::string method{}; // "GET", also in place of "HEAD"
   std::string path{};   // without query
   std::string body{};
   std::string query{};       // behind the question mark
   std::string accept{};      // the header Accept
   std::string lastEventId{}; // the header Last-Event-ID
   std::string ifNoneMatch{}; // the header If-None-Match
};

// Text that goes on until the client disconnects: server-sent events.
class Stream {
 public:
   virtual ~Stream() = default;

   // `news` is called when there may be more, on the server's loop. Called once.
   virtual void start( std::function<void()> news ) = 0;
   // What is to be sent now. Empty: there is nothing yet.
   virtual std::string next() = 0;
};

struct Response {
   unsigned status = 200;
   std::string body{};
   std::string contentType = "application/json";
   std::string allow{};              // the right methods, when the request has another one
   std::shared_ptr<Stream> stream{}; // in place of the body
   // Further headers, or others in place of the usual ones: names and values.
   std::vector<std::pair<std::string, std::string>> headers{};
};

// Has to be called once; later calls do nothing.
using Reply = std::function<void( const Response & )>;
using Handler = std::function<void( const Request &, const Reply & )>;

// The status codes of the answers (RFC 9110, RFC 6585).
namespace Status {
constexpr unsigned ok = 200, notModified = 304, badRequest = 400, unauthorized = 401,
                   forbidden = 403, notFound = 404, methodNotAllowed = 405, contentTooLarge = 413,
                   misdirected = 421, headerTooLarge = 431, notImplemented = 501, badGateway = 502,
                   unavailable = 503, timedOut = 504;
} // namespace Status

// An answer with an error: {"error": "..."}.
Response errorResponse( unsigned status, std::string_view words );

} // namespace Http
