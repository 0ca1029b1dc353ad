#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Transfer.h"

#include <chrono>
#include <stdexcept>
#include <string_view>

namespace Bus {

inline constexpr unsigned maxRequests = 4096;        // in a transaction
inline constexpr uint32_t maxTransferBytes = 8192;   // as much as Linux takes in one message
inline constexpr uint32_t maxAnswerBytes = 8u << 20; // of a transaction, well below a frame's limit

// A transaction that makes no sense; the text says where and why.
struct Refused : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// A client's message from its bytes. Throws Refused when they are none, or hold more than
// maxRequests: those are counted before room is made for them.
Smbus::TransactionRequest parse( std::string_view bytes );

// Checks a client's message whole, so that a senseless one never reaches a bus. Its time limit is
// the client's, at most bound. Throws Refused.
Transaction decode( const Smbus::TransactionRequest &, std::chrono::milliseconds bound );

// The answer that says only why there is none.
Smbus::TransactionResponse failure( std::string_view error );

} // namespace Bus
