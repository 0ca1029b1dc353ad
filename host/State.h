#pragma once

#include "health/State.h"

namespace Host {

using Health::BoardReport;
using Health::Fault;
using Health::hasUnreadable;
using Health::nameOf;
using Health::ObjectReport;
using Health::Reading;
using Health::Scalar;
using Health::State;
using Health::stateOf;
using Health::toText;
using Health::ValueReport;

} // namespace Host
