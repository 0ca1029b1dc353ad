#pragma once

#include "boardfiles/Board.h"
#include "host/State.h"
#include "host/serve/BoardFamilies.h"

namespace Host {

// All that is known of one object. The report was described.
void addObject( const BoardFiles::ObjectDescription &description, const ObjectReport &object,
                BoardFamilies &to );

} // namespace Host
