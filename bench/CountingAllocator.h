// The number of allocations of the process.
#pragma once

extern long allocations;
