// How busy the server's busses were, between two answers to a request for load.
#pragma once

#include "smbus/Control.pb.h"

#include <string>

namespace SmbusClient {

// A table for people, or one JSON object on one line. Before: an empty response for all since the
// server's start. Chips: the table has a row for each chip, as JSON always does.
std::string formatLoad( const SmbusControl::Response &before, const SmbusControl::Response &now,
                        bool chips, bool json );

} // namespace SmbusClient
