// The parts of the Api that are about events.
#pragma once

#include "boardfiles/Board.h"
#include "host/serve/Api.h"

namespace Host {

class Events;

// GET /v1/events: a list, or the start of a stream.
Api::Response answerEvents( const Api::Request &request, const BoardFiles::Board &board,
                            const Events &events );
// POST /v1/acknowledge.
Api::Response acknowledge( const std::string &body, const Events &events );

} // namespace Host
