#pragma once

#include "boardfiles/Board.h"
#include "history/Store.h"
#include "http/Exchange.h"

namespace Host {

// GET /v1/history: what the numbers of an object were, as JSON or as CSV.
Http::Response answerHistory( const Http::Request &request, const BoardFiles::Board &board,
                              const History::Store &history );

} // namespace Host
