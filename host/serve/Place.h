#pragma once

#include <filesystem>
#include <string>

namespace Host {

// The Unix socket of a running `serve`: ORBIS_HOST_SOCKET, or host.sock under /run/orbis where
// that is unset or empty.
std::filesystem::path serveSocket();

// What a board is called between programs: its folder, without links.
std::string serveName( const std::filesystem::path &board );

} // namespace Host
