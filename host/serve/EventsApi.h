// The parts of the Api that are about events.
#pragma once

#include "boardfiles/Board.h"
#include "http/Exchange.h"

namespace Host {

class Events;

// GET /v1/events: a list, or the start of a stream.
Http::Response answerEvents( const Http::Request &request, const BoardFiles::Board &board,
                             Events &events );
// POST /v1/acknowledge.
Http::Response acknowledge( const std::string &body, const Events &events );

} // namespace Host
