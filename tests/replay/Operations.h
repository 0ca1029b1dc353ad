// The operations of the host's records, with random arguments.
#pragma once

#include "Random.h"
#include "pl.h"

#include <functional>
#include <string>
#include <vector>

struct Operation {
   std::string words;                          // object and operation
   std::function<std::string( Random & )> run; // returns its arguments and its result
};
using Operations = std::vector<Operation>;

Operations operationsOf( const std::string &name, pl_slot * );
Operations operationsOf( const std::string &name, pl_led * );
Operations operationsOf( const std::string &name, pl_temp_sensor * );
Operations operationsOf( const std::string &name, pl_fan * );
Operations operationsOf( const std::string &name, pl_psu * );
Operations operationsOf( const std::string &name, pl_gpio * );
Operations operationsOf( const std::string &name, pl_xcvr * );
Operations operationsOf( const std::string &name, pl_smbus * );
Operations operationsOf( const std::string &name, pl_system * );
