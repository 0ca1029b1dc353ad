#pragma once

#include <stdexcept>

namespace SmbusClient {

// There is no connection to the server, or it broke.
struct Unreachable : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// What failed, as the server reports it.
struct Failed : std::runtime_error {
   using std::runtime_error::runtime_error;
};

} // namespace SmbusClient
