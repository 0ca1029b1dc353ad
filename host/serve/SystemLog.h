#pragma once

#include "health/Event.h"

#include <string>
#include <vector>

namespace Host {

// Whether standard error goes to the system's journal, as the variable JOURNAL_STREAM says.
bool isSystemLog( int standardError );

// An event as fields of the system's journal: "ORBIS_CAUSE=psu2-slot absent". A query finds them by
// `journalctl ORBIS_OBJECT=psu2-slot`.
std::vector<std::string> systemLogFields( const Health::Event &event );

// Returns whether the system took it.
bool toSystemLog( const Health::Event &event );

} // namespace Host
