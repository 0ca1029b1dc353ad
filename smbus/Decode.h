#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Transfer.h"

#include <chrono>
#include <stdexcept>
#include <string_view>

namespace Bus {

inline constexpr unsigned maxRequests = 4096;      // in a transaction
inline constexpr uint32_t maxTransferBytes = 8192; // the longest message that Linux accepts
inline constexpr uint32_t maxAnswerBytes =
   8u << 20; // of a transaction; well below the limit of a frame

// A transaction is not valid; the text says where and why.
struct Refused : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// How many requests a message has; when it can't be parsed, those before the first such byte.
unsigned countRequests( std::string_view bytes );

// Parses a client's message. Throws Refused when the bytes are not a message, or when it has more
// than maxRequests; it counts them before it allocates memory for them. A message that is used
// again needs no memory for requests like those before.
void parse( std::string_view bytes, Smbus::TransactionRequest &message );

// Checks the whole message before any of it reaches a bus. The time limit is the client's, but at
// most bound. Throws Refused. A transaction that is used again needs no memory for one like before.
void decode( const Smbus::TransactionRequest &, std::chrono::milliseconds bound, Transaction & );
inline Transaction decode( const Smbus::TransactionRequest &message,
                           std::chrono::milliseconds bound ) {
   Transaction transaction;
   decode( message, bound, transaction );
   return transaction;
}

// A response with only this error.
Smbus::TransactionResponse failure( std::string_view error );

} // namespace Bus
