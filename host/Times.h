#pragma once

#include "health/Times.h"

namespace Host {

using Health::localTimeText;
using Health::Since;
using Health::sinceForms;
using Health::sinceOf;
using Health::sinceTimeForms;
using Health::timeIn;
using Health::timeText;

} // namespace Host
