#pragma once

#include "http/Exchange.h"

#include <filesystem>
#include <optional>
#include <string>

namespace Http {

// What decides whether a request may be answered.
struct Credentials {
   std::string host{};          // the header Host
   std::string origin{};        // the header Origin; empty: none
   std::string authorization{}; // the header Authorization
};

// Who may ask at a TCP socket. At a Unix socket whoever can connect may read, and the members of a
// Sockets::ControlGroup may act.
class Guard {
 public:
   // Without a token, requests may only read. The token is the first line of a file; throws
   // std::runtime_error when it can't be read, others may read it, or it is shorter than 16
   // characters.
   Guard() = default;
   explicit Guard( const std::filesystem::path &tokenFile );

   // Why the request isn't answered; nothing: it is.
   // - Host has to be an IP address, localhost or this machine's name: a page of somewhere else
   // whose
   //   name was made to lead here names itself.
   // - Origin, which a browser sends for the page that asks, has to be this server.
   // - What isn't GET or HEAD needs the token: "Authorization: Bearer TOKEN" (RFC 6750).
   std::optional<Response> refusal( const std::string &method, const Credentials & ) const;

 private:
   std::optional<std::string> token_{};
};

} // namespace Http
