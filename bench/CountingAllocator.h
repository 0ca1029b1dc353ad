// Every allocation of the process, counted.
#pragma once

extern long allocations;
