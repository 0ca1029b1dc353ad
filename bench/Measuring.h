// What the benchmarks measure with.
#pragma once

#include <ctime>
#include <sys/types.h>
#include <vector>

// Where this process and the other one run.
enum Placement { OneCore, Apart, Free };

// The other process: with all its threads.
void place( Placement placement, pid_t other );

double secondsOf( clockid_t clock );

double median( std::vector<double> values );
