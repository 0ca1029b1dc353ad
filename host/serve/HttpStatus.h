#pragma once

// The status codes that the served board answers with (RFC 9110, RFC 6585).
namespace Host::HttpStatus {

constexpr unsigned ok = 200, badRequest = 400, notFound = 404, methodNotAllowed = 405,
                   contentTooLarge = 413, headerTooLarge = 431, notImplemented = 501,
                   badGateway = 502, unavailable = 503, timedOut = 504;

} // namespace Host::HttpStatus
