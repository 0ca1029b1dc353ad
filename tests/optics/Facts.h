// All that a decoded module says, as texts: what is absent isn't there.
#pragma once

#include "optics/Module.h"

#include <map>
#include <string>

namespace OpticsTest {

// "rx power 2 high alarm" -> "0.4". A repeated option, length or monitor has one fact for all of
// them.
using Facts = std::map<std::string, std::string>;
Facts factsOf( const Optics::Module &module );

// A sentence for each fact of `some` that isn't in `all`, or is another one there.
std::vector<std::string> notIn( const Facts &all, const Facts &some );

} // namespace OpticsTest
