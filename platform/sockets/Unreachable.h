#pragma once

#include <string>

namespace Sockets {

// Why a client could not connect to the Unix socket, with its path and what a user can do about it.
// error: the errno value.
std::string whyUnreachable( const std::string &path, int error );

} // namespace Sockets
