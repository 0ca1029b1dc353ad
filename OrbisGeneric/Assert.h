// assert for every source of the plug-in. A wrong document or a broken bus stops the process with
// the condition as its text, in every build type: without that the plug-in would drive a wrong
// chip.
#pragma once

#ifdef NDEBUG
#error "NDEBUG is set: the plug-in can't do without its assertions"
#endif

#include <cassert>
