#pragma once

#include <stdexcept>

namespace SmbusClient {

// Words that are not a command; the text says why.
struct WrongCommand : std::runtime_error {
   using std::runtime_error::runtime_error;
};

} // namespace SmbusClient
