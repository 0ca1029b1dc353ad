// The page that shows the board in a browser.
#pragma once

#include "http/Exchange.h"

#include <string_view>

namespace Host {

// A file of panel/, or that there is no such file.
Http::Response answerPage( const Http::Request &request, std::string_view name );

} // namespace Host
